#include "platform/host/sets/host_set_machine.h"

#include "platform/host/sets/set_matrix.h"
#include "platform/host/sets/set_rows.h"
#include "platform/host/sets/set_solver.h"

namespace zelsvm {
namespace {

class HostSetMachine : public SetMachine {
 public:
  void begin(const SetTask& newTask) override {
    task = newTask;
    rows.assign(task);
  }

  void end() override { task = {}; }

  void addRows(std::span<const WeightedRow> weighted, std::span<double> sums) override {
    rows.add(weighted, sums);
  }

  [[nodiscard]] std::uint64_t rowsAtOnce() const override { return 512; }
  [[nodiscard]] std::uint64_t rowsMade() const override { return rows.made(); }
  [[nodiscard]] double cacheHitRate() const override { return rows.hitRate(); }

  void chooseSet(std::span<const unsigned> samples, SetPrecision precision) override {
    matrix.make(task, samples, precision);
  }

  void addSetRows(std::span<const double> weights, std::span<double> sums) override {
    matrix.addRows(weights, sums);
  }

  SetSteps solveSet(const SetVariables& variables, std::span<double> sums, double tolerance,
                    std::uint64_t mostSteps) override {
    return solver.solve(matrix, variables, sums, tolerance, mostSteps);
  }

 private:
  SetTask task{};
  SetRows rows;
  SetMatrix matrix;
  SetSolver solver;
};

}  // namespace

std::unique_ptr<SetMachine> makeHostSetMachine() { return std::make_unique<HostSetMachine>(); }

}  // namespace zelsvm
