// A solver's machine on a device beside a slow reference.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/machine/cuda_machine.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/device/solver_walk.h"
#include "support/samples.h"

namespace {

using zelsvm::CudaMachine;
using zeltest::ReferenceSolver;
using zeltest::SolverShape;
using zeltest::SolverWalk;

constexpr int linear = zelsvm::SVM_KERNEL_LINEAR;
constexpr int radial = zelsvm::SVM_KERNEL_RADIAL;

TEST(CudaSolver, EveryKernelFunctionSparseAndDense) {
  const CudaMachine machine(0);
  for (const int kernel : zeltest::allKernels)
    for (const bool sparse : {false, true})
      for (const bool twoGroups : {false, true})
        for (const bool twice : {false, true}) {
          const SolverShape shape{.samples = 70,
                                  .kernel = kernel,
                                  .sparse = sparse,
                                  .twoGroups = twoGroups,
                                  .twice = twice};
          SolverWalk(machine, shape, 11).run(6);
        }
}

TEST(CudaSolver, SizesAroundTheWidthsOfBlocks) {
  const CudaMachine machine(0);
  for (const std::size_t samples : {1, 2, 31, 33, 127, 128, 129, 513, 1100})
    for (const bool twoGroups : {false, true}) {
      const SolverShape shape{.samples = samples, .kernel = radial, .twoGroups = twoGroups};
      SolverWalk(machine, shape, 3).run(3);
    }
}

// Whole numbers make many gradients equal.
TEST(CudaSolver, TiesGoToTheLowerVariable) {
  const CudaMachine machine(0);
  for (const std::size_t samples : {40, 200, 2100})
    for (const bool twice : {false, true}) {
      const SolverShape shape{.samples = samples,
                              .kernel = linear,
                              .twice = twice,
                              .fractions = false,
                              .fromZero = true};
      SolverWalk(machine, shape, 5).expectFirstOfTies();
    }
}

TEST(CudaSolver, ShrinkingSearchesActiveVariablesOnly) {
  const CudaMachine machine(0);
  for (const bool twoGroups : {false, true})
    for (const bool twice : {false, true}) {
      const SolverShape shape{
          .samples = 150, .kernel = radial, .twoGroups = twoGroups, .twice = twice};
      SolverWalk walk(machine, shape, 8);
      walk.run(4);
      for (int round = 0; round < 3; ++round) {
        walk.shrink();
        walk.run(3);
      }
      walk.activateAll();
      walk.run(2);
    }
}

TEST(CudaSolver, ReadsEitherOrBothAndCountsRowsFromTheCache) {
  const CudaMachine machine(0);
  const ReferenceSolver reference({.samples = 40, .kernel = radial, .fromZero = true}, 2);
  const auto solver = machine.makeSolver(zelsvm::SVM_KERNEL_RADIAL, false);
  solver->begin(reference.task(), [] { ADD_FAILURE() << "nothing to add"; });
  EXPECT_EQ(solver->cacheHitRate(), 0);
  std::vector<double> alpha(40, 7);
  std::vector<double> gradient(40, 7);
  solver->read(alpha, {});
  solver->read({}, gradient);
  EXPECT_EQ(alpha, reference.alpha);
  EXPECT_EQ(gradient, reference.linearTerm);
  zelsvm::SmoSelection<double> selection{};
  zelsvm::SmoSelection<double> second{};
  for (int step = 0; step < 2; ++step) {
    solver->select(selection, second);
    solver->movePair(selection, second);
    solver->movePair(selection, second);
  }
  EXPECT_GE(solver->cacheHitRate(), 0.5);
  solver->end();
}

// The symbols are the device's, and every user finds its own in them.
TEST(CudaSolver, SolvesTakeTurns) {
  const CudaMachine machine(0);
  SolverWalk first(machine, {.samples = 60, .kernel = radial}, 1);
  SolverWalk second(machine, {.samples = 90, .kernel = linear, .twoGroups = true}, 2);
  for (int step = 0; step < 4; ++step) {
    first.run(1);
    second.run(1);
  }
  const auto solve = [&machine](int kernel) {
    SolverWalk(machine, {.samples = 64, .kernel = kernel}, 9).run(4);
  };
  std::thread other(solve, radial);
  solve(linear);
  other.join();
}

}  // namespace
