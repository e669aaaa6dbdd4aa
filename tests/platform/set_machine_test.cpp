// What a machine does for working sets, beside a slow reference.
#include "platform/set_machine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "platform/device/reference_solver.h"
#include "support/tested_machine.h"

namespace {

using zelsvm::SetPrecision;
using zelsvm::WeightedRow;
using zeltest::ReferenceSolver;
using zeltest::SolverShape;

constexpr double tolerance = 1e-10;

zelsvm::SetTask taskOf(const ReferenceSolver& reference, std::uint64_t megabytes) {
  return {
      .samples = &reference.matrix.get(), .kernel = reference.kernel, .cacheMegabytes = megabytes};
}

// More rows than are made together, some of them to be kept, some never asked for again.
TEST(SetMachineRows, AddUpWithAnyCache) {
  for (const int kernel : zeltest::allKernels)
    for (const bool sparse : {false, true}) {
      const ReferenceSolver reference({.samples = 1100, .kernel = kernel, .sparse = sparse}, 7);
      for (const std::uint64_t megabytes : {0, 1, 100}) {
        const auto machine = zeltest::testedMachine().makeSetMachine();
        machine->begin(taskOf(reference, megabytes));
        std::vector<double> sums(1100, 0.5);
        std::vector<double> right = sums;
        std::uint64_t asked = 0;
        for (const unsigned step : {1, 3, 7}) {
          std::vector<WeightedRow> rows;
          for (unsigned s = 0; s < 1100; s += step) {
            rows.push_back({s, s % 4 != 0, std::sin(s + step)});
            for (std::size_t t = 0; t < right.size(); ++t)
              right[t] += rows.back().weight * reference.kernelOf(s, t);
          }
          asked += rows.size();
          machine->addRows(rows, sums);
        }
        for (std::size_t t = 0; t < right.size(); ++t) ASSERT_NEAR(sums[t], right[t], 1e-8) << t;
        EXPECT_EQ(machine->cacheHitRate(),
                  1 - static_cast<double>(machine->rowsMade()) / static_cast<double>(asked));
        // A machine need not keep what it makes fast.
        if (megabytes == 100 && machine->cacheHitRate() > 0) {
          // The last step's rows are cached but for every fourth, which nobody wanted to keep.
          EXPECT_EQ(machine->rowsMade(), 1100 + 92 + 40);
        }
        const std::vector<WeightedRow> rows = {{5, false, 2}, {900, true, -1.5}};
        const std::vector<unsigned> chosen = {777, 0};
        std::vector<double> some(2, 1);
        machine->addExactly(rows, chosen, some);
        for (std::size_t k = 0; k < 2; ++k)
          EXPECT_NEAR(
              some[k],
              1 + 2 * reference.kernelOf(5, chosen[k]) - 1.5 * reference.kernelOf(900, chosen[k]),
              1e-10);
        machine->end();
      }
    }
}

// Takes a set of all samples through its steps one by one.
class SetWalk {
 public:
  explicit SetWalk(const SolverShape& shape)
      : reference(shape, 5), machine(zeltest::testedMachine().makeSetMachine()) {
    machine->begin(taskOf(reference, 1));
    std::vector<unsigned> all;
    std::vector<double> weights(shape.samples);
    for (unsigned s = 0; s < shape.samples; ++s) all.push_back(s);
    for (std::size_t t = 0; t < reference.count(); ++t)
      weights[t % shape.samples] += reference.signs[t] * reference.alpha[t];
    machine->chooseSet(all, SetPrecision::full);
    sums.assign(shape.samples, 0);
    machine->addSetRows(weights, sums);
    expectSums();
  }

  // A step that the machine makes must be the best one; false where there is none.
  bool step() {
    const int group = widestGroup();
    const auto [up, low] = reference.extremes(group);
    const std::vector<double> before = reference.alpha;
    const zelsvm::SetSteps made = run(1e-3, 1);
    if (up - low <= 1e-3) {
      EXPECT_TRUE(made.isDone && made.count == 0);
      return false;
    }
    EXPECT_EQ(made.count, 1U);
    const auto [i, j] = movedPair(before, reference.alpha, group, up);
    if (i == reference.count() || j == reference.count()) {
      ADD_FAILURE() << "no pair was moved";
      return false;
    }
    const std::vector<double> after = std::exchange(reference.alpha, before);
    EXPECT_NEAR(reference.violation(i), up, tolerance);
    double best = 0;
    for (const unsigned t : reference.active)
      if (reference.isInGroup(t, group)) best = std::min(best, reference.gain(i, up, t));
    EXPECT_NEAR(reference.gain(i, up, j), best, tolerance * std::abs(best));
    const auto [deltaI, deltaJ] = reference.pairStep(i, j);
    EXPECT_NEAR(after[i] - before[i], deltaI, tolerance);
    EXPECT_NEAR(after[j] - before[j], deltaJ, tolerance);
    reference.alpha = after;
    reference.updateGradient();
    expectSums();
    return true;
  }

  void finish() {
    const zelsvm::SetSteps some = run(1e-6, 20);
    EXPECT_TRUE(some.isDone || some.count == 20);
    const zelsvm::SetSteps rest = run(1e-6, 100'000);
    EXPECT_TRUE(rest.isDone);
    reference.updateGradient();
    expectSums();
    const auto [up, low] = reference.extremes(widestGroup());
    EXPECT_LE(up - low, 1e-6 + tolerance);
  }

  // The pair that a first step moves, lower number first.
  std::pair<unsigned, unsigned> firstPair() {
    const std::vector<double> before = reference.alpha;
    run(1e-3, 1);
    std::vector<unsigned> moved;
    for (unsigned t = 0; t < before.size(); ++t)
      if (reference.alpha[t] != before[t]) moved.push_back(t);
    reference.alpha = before;
    if (moved.size() != 2) return {zelsvm::noIndex, zelsvm::noIndex};
    return {moved[0], moved[1]};
  }

  ReferenceSolver reference;

 private:
  zelsvm::SetSteps run(double gap, std::uint64_t steps) {
    return machine->solveSet({.samples = reference.shape.samples,
                              .signs = reference.signs,
                              .linearTerm = reference.linearTerm,
                              .multipliers = reference.alpha,
                              .Cp = reference.Cp,
                              .Cn = reference.Cn,
                              .twoGroups = reference.shape.twoGroups,
                              .factors = reference.factors},
                             sums, gap, steps);
  }

  [[nodiscard]] int widestGroup() const {
    const auto gap = [&](int g) { return reference.extremes(g).up - reference.extremes(g).low; };
    return reference.shape.twoGroups && gap(1) > gap(0) ? 1 : 0;
  }

  // Of the variables that have changed, the one at the extreme and the other one.
  [[nodiscard]] std::pair<std::size_t, std::size_t> movedPair(const std::vector<double>& before,
                                                              const std::vector<double>& after,
                                                              int group, double up) const {
    std::pair<std::size_t, std::size_t> pair{before.size(), before.size()};
    for (std::size_t t = 0; t < before.size(); ++t) {
      if (before[t] == after[t]) continue;
      EXPECT_TRUE(reference.isInGroup(t, group));
      const bool rose = reference.signs[t] * (after[t] - before[t]) > 0;
      EXPECT_TRUE(!rose || std::abs(reference.violation(t) - up) <= tolerance);
      (rose ? pair.first : pair.second) = t;
    }
    return pair;
  }

  void expectSums() {
    for (std::size_t t = 0; t < reference.count(); ++t)
      ASSERT_NEAR(sums[t % reference.shape.samples],
                  -reference.signs[t] * reference.linearTerm[t] - reference.violation(t), 1e-9)
          << t;
  }

  std::unique_ptr<zelsvm::SetMachine> machine;
  std::vector<double> sums;
};

TEST(SetMachineSteps, AreTheBestOnes) {
  for (const int kernel : zeltest::allKernels)
    for (const bool twoGroups : {false, true})
      for (const bool twice : {false, true}) {
        SetWalk walk({.samples = 70,
                      .kernel = kernel,
                      .sparse = twice,
                      .twoGroups = twoGroups,
                      .twice = twice});
        for (int k = 0; k < 8 && walk.step() && !testing::Test::HasFailure(); ++k) {
        }
      }
}

TEST(SetMachineSteps, EndWithinTheTolerance) {
  for (const std::size_t samples : {1, 2, 31, 33, 257, 513})
    for (const bool twoGroups : {false, true})
      SetWalk({.samples = samples, .kernel = zelsvm::SVM_KERNEL_RADIAL, .twoGroups = twoGroups})
          .finish();
}

// Whole numbers make many gradients equal.
TEST(SetMachineSteps, TakeTheFirstOfEqualSamples) {
  SetWalk walk({.samples = 600,
                .kernel = zelsvm::SVM_KERNEL_LINEAR,
                .fractions = false,
                .fromZero = true,
                .cols = 2});
  const ReferenceSolver& reference = walk.reference;
  const auto [up, low] = reference.extremes(0);
  unsigned i = 0;
  while (!reference.isUpper(i) || reference.violation(i) != up) ++i;
  unsigned j = i;
  for (unsigned t = static_cast<unsigned>(reference.count()); t-- > 0;)
    if (reference.gain(i, up, t) <= reference.gain(i, up, j)) j = t;
  EXPECT_EQ(walk.firstPair(), std::pair(std::min(i, j), std::max(i, j)));
}

}  // namespace
