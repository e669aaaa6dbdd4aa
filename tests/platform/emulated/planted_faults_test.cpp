// Faults planted in the kernels' launches are found, each by wrong results or by a race.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <vector>

#include "base/errors.h"
#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/machine/cuda_machine.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/device/device_array.h"
#include "platform/device/reference_solver.h"
#include "platform/emulated/execution/planted_fault.h"
#include "platform/emulated/execution/race_model.h"
#include "platform/emulated/runtime/device_setup.h"

// A race is reported once for each place otherwise.
extern "C" const char* __tsan_default_options() {
  return "suppress_equal_stacks=0:suppress_equal_addresses=0";
}

namespace {

using zel::device::PlantedFault;
using zel::device::Synchronisation;
using zelsvm::CudaMachine;

using Devices = std::vector<zel::DeviceTraits>;
using Outcome = std::vector<double>;

// The race detector ends a process that had races with this status.
constexpr int foundStatus = 66;

// Wrong results need every thread of the last block to have a result to fold; races need few
// threads.
constexpr bool racing = zel::device::racesAreSought;

zel::DeviceTraits device() { return {.residentBlocks = racing ? 1 : 45}; }

// Searches one behind the other, each without the variable that the last one found.
class Steps {
 public:
  explicit Steps(bool twoGroups)
      : reference({.samples = racing ? 130U : 1100U,
                   .kernel = zelsvm::SVM_KERNEL_RADIAL,
                   .twoGroups = twoGroups,
                   .fromZero = !racing && !twoGroups},
                  4),
        solver(machine.makeSolver(reference.kernel.type, twoGroups)) {}

  Outcome operator()() {
    Outcome outcome;
    solver->begin(reference.task(), [] {});
    std::vector<unsigned> active = reference.active;
    for (int search = 0; search < (racing ? 1 : 12); ++search) {
      zelsvm::SmoSelection<double> a{};
      zelsvm::SmoSelection<double> b{};
      solver->activate(active);
      solver->select(a, b);
      for (const auto& found : {a, b})
        outcome.insert(outcome.end(),
                       {static_cast<double>(found.index), found.beta.up, found.beta.low});
      if (a.index >= reference.count() || b.index >= reference.count()) break;
      const auto [i, j, deltaI, deltaJ] = solver->movePair(a, b);
      outcome.insert(outcome.end(), {static_cast<double>(j), deltaI, deltaJ});
      std::erase(active, a.index);
      std::erase(active, b.index);
      std::erase(active, j);
    }
    return outcome;
  }

 private:
  zel::DeviceSetup setup{Devices{device()}};
  CudaMachine machine{0};
  zeltest::ReferenceSolver reference;
  std::unique_ptr<zelsvm::SolverMachine> solver;
};

class Sums {
 public:
  Sums() { sums->assign(randomValues(count, 1), randomValues(count, 2)); }
  Outcome operator()() {
    const auto [g1, g2, h11, h21, h22] = sums->derivatives(0.3, 0.1);
    return {sums->loss(0.3, 0.1), g1, g2, h11, h21, h22};
  }

 private:
  static constexpr std::size_t count = racing ? 400 : 128 * 128;

  zel::DeviceSetup setup{Devices{device()}};
  CudaMachine machine{0};
  std::unique_ptr<zelsvm::SigmoidSums> sums = machine.makeSigmoidSums();
};

class Decisions {
 public:
  Outcome operator()() {
    Outcome values(2);
    predictor->decide(matrix.get(), 0, 2, values.data());
    return values;
  }

 private:
  CudaMachine machine{0};
  zeltest::SampleMatrix matrix{zeltest::sampleRows(150, 3, true, 1), false};
  std::vector<double> coefficients = randomValues(150, 2);
  std::vector<double> rho = {0.5};
  std::unique_ptr<zelsvm::PredictorMachine> predictor = machine.makePredictor(
      {&matrix.get(), zeltest::kernelSettings(2), {0, 150, 150}, coefficients, rho});
};

// A set of all samples, solved as far as some steps go.
class SetSteps {
 public:
  SetSteps() {
    for (unsigned s = 0; s < samples; ++s) all.push_back(s);
    machine->begin({&reference.matrix.get(), reference.kernel, 1});
    machine->chooseSet(all, zelsvm::SetPrecision::full);
  }

  Outcome operator()() {
    Outcome outcome = reference.start;
    std::vector<double> sums(samples);
    machine->solveSet({.samples = samples,
                       .signs = reference.signs,
                       .linearTerm = reference.linearTerm,
                       .multipliers = outcome,
                       .Cp = reference.Cp,
                       .Cn = reference.Cn,
                       .twoGroups = false},
                      sums, 1e-6, racing ? 2 : 12);
    outcome.insert(outcome.end(), sums.begin(), sums.end());
    return outcome;
  }

 private:
  static constexpr unsigned samples = racing ? 200 : 256;

  CudaMachine cuda{0};
  zeltest::ReferenceSolver reference{
      {.samples = samples, .kernel = zelsvm::SVM_KERNEL_RADIAL, .fromZero = true}, 4};
  std::unique_ptr<zelsvm::SetMachine> machine = cuda.makeSetMachine();
  std::vector<unsigned> all;
};

// Ends the process with a status that says whether the fault was noticed.
template <typename Scenario>
[[noreturn]] void plant(Synchronisation kind, unsigned nth) {
  Scenario scenario;
  const Outcome right = scenario();
  const PlantedFault fault(kind, nth);
  bool found = false;
  // A fault may go unnoticed once: results may come out right, and the race detector forgets.
  for (int repeat = 0; repeat < 8 && !found; ++repeat) try {
      found = scenario() != right;
    } catch (const zel::RuntimeException&) {
      found = true;
    }
  std::exit(found ? foundStatus : EXIT_SUCCESS);
}

template <typename Scenario>
void expectFound(unsigned barriers, unsigned fences = 2) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto missed = testing::ExitedWithCode(EXIT_SUCCESS);
  // What nobody has written may also be an index.
  const auto found = [](int status) {
    return testing::ExitedWithCode(foundStatus)(status) || testing::KilledBySignal(SIGSEGV)(status);
  };
  EXPECT_EXIT(plant<Scenario>(Synchronisation::barrier, 0), missed, "") << "without a fault";
  for (unsigned nth = 1; nth <= barriers; ++nth)
    EXPECT_EXIT(plant<Scenario>(Synchronisation::barrier, nth), found, "") << "barrier " << nth;
  // Nothing but the race detector sees that one is missing: here memory has one order for all.
  if (!racing) return;
  for (unsigned nth = 1; nth <= fences; ++nth)
    EXPECT_EXIT(plant<Scenario>(Synchronisation::fence, nth), found, "") << "fence " << nth;
}

struct OneGroup : Steps {
  OneGroup() : Steps(false) {}
};
struct TwoGroups : Steps {
  TwoGroups() : Steps(true) {}
};

// A fold over 32 threads has 5 barriers, one over 128 has 7; the choice of the last block has one.
TEST(PlantedFaults, InSearches) { expectFound<OneGroup>(5 + 1 + 5); }
TEST(PlantedFaults, InSearchesOfTwoGroups) { expectFound<TwoGroups>(10 + 1 + 10); }
TEST(PlantedFaults, InSums) { expectFound<Sums>(7 + 1 + 7); }

// A fold over 32 threads by eights has 2 barriers; the others read what it and the step gave behind
// one more.
TEST(PlantedFaults, InSetSteps) { expectFound<SetSteps>(3 + 3, 0); }

TEST(PlantedFaults, InDecisionValues) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (unsigned nth = 1; nth <= 7; ++nth)
    EXPECT_EXIT(plant<Decisions>(Synchronisation::barrier, nth),
                testing::ExitedWithCode(foundStatus), "")
        << "barrier " << nth;
}

// A search is given half of the shared memory that it needs.
TEST(PlantedFaults, InTheSizeOfSharedMemory) {
  const DeviceArray<zelsvm::SmoUpperBeta<double>> upper(2);
  const DeviceArray<unsigned> index(2);
  const DeviceArray<unsigned> active(2);
  const auto search = zelsvm::selectSmoWorkingSetKernel<double, true>;
  EXPECT_THROW(zel::launch(search, {1U, 32U, 512}, upper.data(), index.data(), upper.data() + 1,
                           index.data() + 1, active.data(), 0U),
               zel::RuntimeException);
  zel::launch(search, {1U, 32U, 1024}, upper.data(), index.data(), upper.data() + 1,
              index.data() + 1, active.data(), 0U);
}

// A loop over the variables takes a step too many.
TEST(PlantedFaults, InTheBoundOfAGridStrideLoop) {
  zeltest::ReferenceSolver reference(
      {.samples = 512, .kernel = zelsvm::SVM_KERNEL_RADIAL, .fromZero = true}, 1);
  const CudaMachine machine(0);
  const auto solver = machine.makeSolver(zelsvm::SVM_KERNEL_RADIAL, false);
  zelsvm::SmoSelection<double> a{};
  zelsvm::SmoSelection<double> b{};
  solver->begin(reference.task(), [] {});
  solver->select(a, b);
  solver->movePair(a, b);
  solver->updateGradient();
  const DeviceArray<double> gradient(512);
  const DeviceArray<double> row(std::vector<double>(512, 1.0));
  const DeviceArray<zelsvm::SmoDelta<double>> delta(std::vector<zelsvm::SmoDelta<double>>{{0, 0}});
  const auto update = zelsvm::updateSmoGradientKernel<double>;
  const auto run = [&](unsigned variables) {
    zel::launch(update, {3U, 128U}, gradient.data(), delta.data(), 0U, row.data(), 1U, row.data(),
                variables);
  };
  run(512);
  EXPECT_THROW(run(513), zel::RuntimeException);
}

}  // namespace
