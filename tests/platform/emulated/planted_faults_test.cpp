// Faults planted in the kernels' launches are found, each by wrong results or by a race.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <type_traits>
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

// A race is reported once for each place otherwise, and not where its first half is forgotten.
extern "C" const char* __tsan_default_options() {
  return "suppress_equal_stacks=0:suppress_equal_addresses=0:history_size=7";
}

namespace {

using zel::device::PlantedFault;
using zel::device::Synchronisation;
using zelsvm::CudaMachine;

using Devices = std::vector<zel::DeviceTraits>;
using Outcome = std::vector<double>;

// The race detector ends a process that had races with this status.
constexpr int foundStatus = 66;

// Wrong results need every thread of the last block to have a result to fold. Races need few
// threads: the race detector keeps 256 apart, takes further ones for continuations of those, and of
// threads that have ended it knows the last 64.
constexpr bool racing = zel::device::racesAreSought;

zel::DeviceTraits device() {
  return {.multiprocessors = racing ? 3 : 45, .residentBlocks = racing ? 1 : 3};
}

constexpr zelsvm::SVM_KERNEL radial = zelsvm::SVM_KERNEL_RADIAL;

// Searches one behind the other, each without the variables that the last one found. What they find
// is in blocks whose results pass all levels of the last fold.
class Steps {
 public:
  explicit Steps(bool twoGroups) : solver(machine.makeSolver(kernel.type, twoGroups)) {
    for (unsigned t = 0; t < count; ++t) {
      signs.push_back(t % 3 == 0 ? -1 : 1);
      all.push_back(t);
      if (t % (45 * zelsvm::searchThreads) >= 36 * zelsvm::searchThreads) linearTerm[t] *= 10;
    }
  }

  Outcome operator()() {
    Outcome outcome;
    solver->begin({.samples = &matrix.get(),
                   .kernel = kernel,
                   .signs = signs,
                   .start = start,
                   .startsAtZero = true,  // the linear term shall be the gradient
                   .linearTerm = linearTerm,
                   .Cp = 1,
                   .Cn = 1,
                   .cacheMegabytes = 0},
                  [] {});
    std::vector<unsigned> active = all;
    for (int search = 0; search < 3; ++search) {
      zelsvm::SmoSelection<double> a{};
      zelsvm::SmoSelection<double> b{};
      solver->activate(active);
      solver->select(a, b);
      for (const auto& found : {a, b})
        outcome.insert(outcome.end(),
                       {static_cast<double>(found.index), found.beta.up, found.beta.low});
      if (a.index >= count || b.index >= count) break;
      const auto [i, j, deltaI, deltaJ] = solver->movePair(a, b);
      outcome.insert(outcome.end(), {static_cast<double>(j), deltaI, deltaJ});
      std::erase(active, a.index);
      std::erase(active, b.index);
      std::erase(active, j);
    }
    return outcome;
  }

 private:
  static constexpr unsigned count = 45 * 4 * zelsvm::searchThreads;  // four for each thread

  zel::DeviceSetup setup{Devices{device()}};
  CudaMachine machine{0};
  zelsvm::KernelSettings kernel = zeltest::kernelSettings(radial);
  zeltest::SampleMatrix matrix{zeltest::sampleRows(count, 2, true, 1), false};
  std::vector<signed char> signs;
  std::vector<double> start = std::vector<double>(count, 0.5);  // which may move either way
  std::vector<double> linearTerm = randomValues(count, 2);
  std::vector<unsigned> all;
  std::unique_ptr<zelsvm::SolverMachine> solver;
};

// A search for both indices by two small blocks, for the races alone.
template <bool twoGroups>
class NarrowSearches {
 public:
  Outcome operator()() {
    solver->begin(reference.task(), [] {});
    const zel::LaunchShape shape(2U, threads, threads * sizeof(zelsvm::Extremes<2>));
    zel::launch(zelsvm::selectSmoWorkingSetKernel<twoGroups>, shape, extremes.data(),
                selected.data(), 1, gradient.data(), {row.data(), row.data(), 0.1, 0.2}, count);
    const zelsvm::FirstOfPair first{row.data(), 1, 0};
    zel::launch(zelsvm::findSmoDeltaKernel<twoGroups, true>, shape, partners.data(), moved.data(),
                1, first, first, multipliers.data(), count);
    return {};
  }

 private:
  static constexpr unsigned threads = 32;
  static constexpr unsigned count = 2 * threads;

  CudaMachine machine{0};
  zeltest::ReferenceSolver reference{{.samples = count, .kernel = radial, .fromZero = true}, 1};
  std::unique_ptr<zelsvm::SolverMachine> solver = machine.makeSolver(radial, twoGroups);
  DeviceArray<zelsvm::Extremes<2>> extremes{2};
  DeviceArray<zelsvm::Partner> partners{2};
  DeviceArray<zel::Ticketed<zelsvm::Extremes<2>>> selected{1};
  DeviceArray<zel::Ticketed<zelsvm::MovedPair>> moved{1};
  DeviceArray<double> gradient{randomValues(count, 1)};
  DeviceArray<double> row{randomValues(count, 2)};
  DeviceArray<double> multipliers{randomValues(count, 3)};
};

class Sums {
 public:
  Sums() { sums->assign(randomValues(count, 1), randomValues(count, 2), {}); }
  Outcome operator()() {
    const auto [g1, g2, h11, h21, h22] = sums->derivatives(0.3, 0.1);
    return {sums->loss(0.3, 0.1), g1, g2, h11, h21, h22};
  }

 private:
  static constexpr std::size_t count = racing ? 100 : 128 * 128;

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
  zeltest::ReferenceSolver reference{{.samples = samples, .kernel = radial, .fromZero = true}, 4};
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

template <bool twoGroups>
using Searches = std::conditional_t<racing, NarrowSearches<twoGroups>,
                                    std::conditional_t<twoGroups, TwoGroups, OneGroup>>;
// Of a fold by eights, over 32 threads or 256.
constexpr unsigned foldBarriers = racing ? 2 : 3;

// The choice of the last block has one barrier.
TEST(PlantedFaults, InSearches) { expectFound<Searches<false>>(2 * foldBarriers + 1); }
TEST(PlantedFaults, InSearchesOfTwoGroups) { expectFound<Searches<true>>(2 * foldBarriers + 1); }
// A fold by halves over 128 threads has 7 barriers. Two such blocks are too many for the race
// detector; the fences between them are those of the searches.
TEST(PlantedFaults, InSums) { expectFound<Sums>(7 + 1 + 7, 0); }

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
  const DeviceArray<zelsvm::Extremes<2>> blocks(1);
  const DeviceArray<zel::Ticketed<zelsvm::Extremes<2>>> answer(1);
  const auto search = zelsvm::selectSmoWorkingSetKernel<true>;
  const auto run = [&](std::size_t extremes) {
    zel::launch(search, {1U, zelsvm::searchThreads, extremes * sizeof(zelsvm::Extremes<2>)},
                blocks.data(), answer.data(), 1, nullptr, {}, 0U);
  };
  EXPECT_THROW(run(zelsvm::searchThreads - 1), zel::RuntimeException);
  run(zelsvm::searchThreads);
}

// A loop over the variables takes a step too many.
TEST(PlantedFaults, InTheBoundOfAGridStrideLoop) {
  zeltest::ReferenceSolver reference(
      {.samples = 512, .kernel = zelsvm::SVM_KERNEL_RADIAL, .fromZero = true}, 1);
  const CudaMachine machine(0);
  const auto solver = machine.makeSolver(zelsvm::SVM_KERNEL_RADIAL, false);
  solver->begin(reference.task(), [] {});
  std::vector<signed char> found(512);
  solver->markShrinkable({}, {}, found);
  const DeviceArray<signed char> marks(512);
  const auto mark = zelsvm::reduceSmoWorkingSetKernel<false>;
  const auto run = [&](unsigned variables) {
    zel::launch(mark, {3U, 128U}, marks.data(), 0, 0, 0, 0, variables);
  };
  run(512);
  EXPECT_THROW(run(513), zel::RuntimeException);
}

}  // namespace
