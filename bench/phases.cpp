// The tools with clocks at the seam between methods and machines: runs as zelsvm-train or
// zelsvm-predict does, by the name that it is started under, and at the end writes what each phase
// took and did as one line of JSON to the file that BENCH_PHASES names.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "platform/host/host_machine.h"
#include "rules/kernel_functions.h"
#include "tools/flows/zelsvm_main.h"
#include "tools/options.h"
#include "tools/run_guarded.h"

namespace {

using zelsvm::DecisionTask;
using zelsvm::KernelSettings;
using zelsvm::PairStep;
using zelsvm::SolverTask;
using Matrix = zelmag::AbstractMatrix<double>;
using Selection = zelsvm::SmoSelection<double>;
using Time = std::chrono::steady_clock;

// What a phase took and what it did, the least that any way of doing it would.
struct Phase {
  const char* name;
  std::atomic<double> seconds = 0;
  std::atomic<double> bytes = 0;
  std::atomic<double> flops = 0;
  std::atomic<double> exponentials = 0;
};

double secondsSince(Time::time_point start) {
  return std::chrono::duration<double>(Time::now() - start).count();
}

// The phases and counts of this process, written when it ends. What passes before the machine is
// first asked for something is mostly reading, and what passes after that mostly writing.
struct Report {
  Phase reading{"reading"};
  Phase start{"start"};
  Phase iterations{"iterations"};
  Phase setRows{"set rows"};
  Phase sets{"sets"};
  Phase shrinking{"shrinking"};
  Phase sigmoids{"sigmoids"};
  Phase decisions{"decisions"};
  Phase writing{"writing"};
  std::atomic<double> rowsAsked = 0;
  std::atomic<double> rowsMissed = 0;
  std::atomic<unsigned> members = 1;  // threads that train label pairs side by side
  Time::time_point processStart = Time::now();
  std::atomic<bool> isMachineUsed = false;
  std::atomic<Time::time_point> machineEnd;

  void beginMachine() {
    if (!isMachineUsed.exchange(true)) reading.seconds = secondsSince(processStart);
  }

  void write() {
    const char* const path = std::getenv("BENCH_PHASES");
    std::FILE* const file = path == nullptr ? nullptr : std::fopen(path, "w");
    if (file == nullptr) return;
    std::fprintf(file, "{\"rows_asked\": %.0f, \"rows_missed\": %.0f, ", rowsAsked.load(),
                 rowsMissed.load());
    const char* separator = "\"phases\": {";
    for (const Phase* phase : {&reading, &start, &iterations, &setRows, &sets, &shrinking,
                               &sigmoids, &decisions, &writing}) {
      std::fprintf(file,
                   "%s\"%s\": {\"s\": %.9g, \"bytes\": %.9g, \"flops\": %.9g, "
                   "\"exponentials\": %.9g}",
                   separator, phase->name, phase->seconds.load(), phase->bytes.load(),
                   phase->flops.load(), phase->exponentials.load());
      separator = ", ";
    }
    std::fprintf(file, "}}\n");
    std::fclose(file);
  }
};

Report report;

// Of threads side by side each one's time counts for its part, so that all phases together take no
// longer than the process.
class Clock {
 public:
  explicit Clock(Phase& phase) : phase(&phase) { report.beginMachine(); }
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  ~Clock() {
    phase->seconds += secondsSince(start) / report.members;
    report.machineEnd = Time::now();
  }

 private:
  Phase* phase;
  Time::time_point start = Time::now();
};

// Exponentials, or functions as dear.
double exponentialsPerValue(const KernelSettings& kernel) {
  return zelsvm::withKernel(kernel.type,
                            []<typename Function>() { return Function::isArithmetic ? 0.0 : 1.0; });
}

// An iteration reads every variable's violation and state and its value of the first row to select
// the second index, and both rows' values, the violation and the state to update and select anew.
// A row that the cache lacks multiplies every stored value once.
class ClockedSolver : public zelsvm::SolverMachine {
 public:
  ClockedSolver(std::unique_ptr<SolverMachine> solver, bool twoGroups)
      : inner(std::move(solver)), rowsPerStep(twoGroups ? 3 : 2) {}

  void begin(const SolverTask& task, const std::function<void()>& columnsAdded) override {
    const Clock clock(report.start);
    inner->begin(task, columnsAdded);
    rows = static_cast<double>(task.samples->rows());
    variables = static_cast<double>(task.start.size());
    flopsPerRow = 2 * static_cast<double>(task.samples->valueCount());
    exponentialsPerRow = rows * exponentialsPerValue(task.kernel);
    steps = 0;
  }
  void end() override {
    const double asked = steps * rowsPerStep;
    const double missed = asked * (1 - inner->cacheHitRate());
    report.rowsAsked += asked;
    report.rowsMissed += missed;
    report.iterations.flops += missed * flopsPerRow;
    report.iterations.exponentials += missed * exponentialsPerRow;
    inner->end();
  }
  void activate(std::span<const unsigned> ascendingVariables) override {
    const Clock clock(report.shrinking);
    inner->activate(ascendingVariables);
  }
  void select(Selection& selection, Selection& second) override {
    const Clock clock(report.iterations);
    inner->select(selection, second);
  }
  PairStep movePair(const Selection& selection, const Selection& second) override {
    const Clock clock(report.iterations);
    ++steps;
    report.iterations.bytes += rows * sizeof(double) + variables * (sizeof(double) + 1);
    return inner->movePair(selection, second);
  }
  void updateGradient() override {
    const Clock clock(report.iterations);
    report.iterations.bytes += rows * 2 * sizeof(double) + variables * (2 * sizeof(double) + 1);
    inner->updateGradient();
  }
  void markShrinkable(const Selection& selection, const Selection& second,
                      std::span<signed char> marks) override {
    const Clock clock(report.shrinking);
    inner->markShrinkable(selection, second, marks);
  }
  void read(std::span<double> multipliers, std::span<double> gradient) override {
    const Clock clock(report.shrinking);
    inner->read(multipliers, gradient);
  }
  [[nodiscard]] double cacheHitRate() const override { return inner->cacheHitRate(); }

 private:
  std::unique_ptr<SolverMachine> inner;
  double rowsPerStep;
  double rows = 0;
  double variables = 0;
  double flopsPerRow = 0;
  double exponentialsPerRow = 0;
  double steps = 0;
};

// A row multiplies every stored value once, as a row of a set's matrix does those of the set.
class ClockedSets : public zelsvm::SetMachine {
 public:
  explicit ClockedSets(std::unique_ptr<SetMachine> sets) : inner(std::move(sets)) {}

  void begin(const zelsvm::SetTask& task) override {
    const Clock clock(report.start);
    inner->begin(task);
    rows = static_cast<double>(task.samples->rows());
    flopsPerRow = 2 * static_cast<double>(task.samples->valueCount());
    exponentials = exponentialsPerValue(task.kernel);
  }
  void end() override {
    const auto made = static_cast<double>(inner->rowsMade());
    if (made > 0) report.rowsAsked += made / (1 - inner->cacheHitRate());
    report.rowsMissed += made;
    report.setRows.flops += made * flopsPerRow;
    report.setRows.exponentials += made * rows * exponentials;
    inner->end();
  }
  void addRows(std::span<const zelsvm::WeightedRow> weighted, std::span<double> sums) override {
    const Clock clock(report.setRows);
    inner->addRows(weighted, sums);
  }
  void addExactly(std::span<const zelsvm::WeightedRow> weighted, std::span<const unsigned> samples,
                  std::span<double> sums) override {
    const Clock clock(report.setRows);
    const auto values = static_cast<double>(weighted.size() * samples.size());
    report.setRows.flops += values / rows * flopsPerRow;
    report.setRows.exponentials += values * exponentials;
    inner->addExactly(weighted, samples, sums);
  }
  [[nodiscard]] bool addsRoughly() const override { return inner->addsRoughly(); }
  [[nodiscard]] std::uint64_t rowsAtOnce() const override { return inner->rowsAtOnce(); }
  [[nodiscard]] std::uint64_t rowsMade() const override { return inner->rowsMade(); }
  [[nodiscard]] double cacheHitRate() const override { return inner->cacheHitRate(); }
  void chooseSet(std::span<const unsigned> samples, zelsvm::SetPrecision precision) override {
    const Clock clock(report.sets);
    const auto size = static_cast<double>(samples.size());
    report.sets.flops += size * size / 2 * flopsPerRow / rows;
    report.sets.exponentials += size * size / 2 * exponentials;
    inner->chooseSet(samples, precision);
  }
  void addSetRows(std::span<const double> weights, std::span<double> sums) override {
    const Clock clock(report.sets);
    inner->addSetRows(weights, sums);
  }
  zelsvm::SetSteps solveSet(const zelsvm::SetVariables& variables, std::span<double> sums,
                            double tolerance, std::uint64_t mostSteps) override {
    const Clock clock(report.sets);
    return inner->solveSet(variables, sums, tolerance, mostSteps);
  }

 private:
  std::unique_ptr<SetMachine> inner;
  double rows = 0;
  double flopsPerRow = 0;
  double exponentials = 0;
};

class ClockedPredictor : public zelsvm::PredictorMachine {
 public:
  ClockedPredictor(std::unique_ptr<PredictorMachine> predictor, const DecisionTask& task)
      : inner(std::move(predictor)) {
    const auto vectors = static_cast<double>(task.vectors->rows());
    flopsPerSample = 2 * static_cast<double>(task.vectors->valueCount()) +
                     2 * static_cast<double>(task.coefficients.size());
    exponentialsPerSample = vectors * exponentialsPerValue(task.kernel);
  }

  std::uint64_t blockSize(const Matrix& test) override { return inner->blockSize(test); }
  void decide(const Matrix& test, std::uint64_t first, std::uint64_t count,
              double* values) override {
    const Clock clock(report.decisions);
    report.decisions.flops += static_cast<double>(count) * flopsPerSample;
    report.decisions.exponentials += static_cast<double>(count) * exponentialsPerSample;
    inner->decide(test, first, count, values);
  }

 private:
  std::unique_ptr<PredictorMachine> inner;
  double flopsPerSample;
  double exponentialsPerSample;
};

class ClockedSums : public zelsvm::SigmoidSums {
 public:
  explicit ClockedSums(std::unique_ptr<SigmoidSums> sums) : inner(std::move(sums)) {}
  void assign(std::span<const double> decisionValues, std::span<const double> targets,
              std::span<const double> weights) override {
    inner->assign(decisionValues, targets, weights);
  }
  double loss(double A, double B) override {
    const Clock clock(report.sigmoids);
    return inner->loss(A, B);
  }
  zelsvm::SigmoidHessian<double> derivatives(double A, double B) override {
    const Clock clock(report.sigmoids);
    return inner->derivatives(A, B);
  }

 private:
  std::unique_ptr<SigmoidSums> inner;
};

class ClockedMachine : public zelsvm::Machine {
 public:
  [[nodiscard]] std::string name() const override { return inner.name(); }
  [[nodiscard]] std::unique_ptr<zelsvm::SolverMachine> makeSolver(zelsvm::SVM_KERNEL kernel,
                                                                  bool twoGroups) const override {
    return std::make_unique<ClockedSolver>(inner.makeSolver(kernel, twoGroups), twoGroups);
  }
  [[nodiscard]] std::unique_ptr<zelsvm::SetMachine> makeSetMachine() const override {
    return std::make_unique<ClockedSets>(inner.makeSetMachine());
  }
  [[nodiscard]] std::unique_ptr<zelsvm::PredictorMachine> makePredictor(
      const DecisionTask& task) const override {
    const Clock clock(report.decisions);
    return std::make_unique<ClockedPredictor>(inner.makePredictor(task), task);
  }
  [[nodiscard]] std::unique_ptr<zelsvm::SigmoidSums> makeSigmoidSums() const override {
    return std::make_unique<ClockedSums>(inner.makeSigmoidSums());
  }
  [[nodiscard]] unsigned solversAtOnce(const Matrix& samples, const KernelSettings& kernel,
                                       std::uint64_t cacheMegabytes,
                                       const zelsvm::PairLoad& load) const override {
    return report.members = inner.solversAtOnce(samples, kernel, cacheMegabytes, load);
  }

 private:
  const zelsvm::Machine& inner = zelsvm::hostMachine();
};

const zelsvm::Machine& clockedMachine(int /*device*/) {
  static const ClockedMachine machine;
  return machine;
}

}  // namespace

int main(int argc, char** argv) {
  return zelsvm_main::runGuarded([&] {
    const zelsvm_opt::ZelSvmOpt options(argc, argv);
    zelsvm_main::ZelSvmMain<double>(options, clockedMachine).run();
    if (report.isMachineUsed) report.writing.seconds = secondsSince(report.machineEnd);
    report.write();
  });
}
