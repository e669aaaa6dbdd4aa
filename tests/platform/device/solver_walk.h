// Takes a machine's solver and the reference through the same steps.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/device/reference_solver.h"

namespace zeltest {

// Each step's outcome is checked, and then taken over from the machine, so that rounding does not
// add up.
class SolverWalk {
 public:
  using Selection = zelsvm::SmoSelection<double>;

  SolverWalk(const zelsvm::Machine& machine, const SolverShape& shape, unsigned seed)
      : reference(shape, seed),
        own(machine.makeSolver(reference.kernel.type, shape.twoGroups)),
        solver(own.get()) {
    begin();
  }
  // With a solver for this kernel function and number of groups.
  SolverWalk(zelsvm::SolverMachine& solver, const SolverShape& shape, unsigned seed)
      : reference(shape, seed), solver(&solver) {
    begin();
  }

  // Until no pair is left, at most so many steps.
  void run(int steps) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, describe());
    for (int k = 0; k < steps && step(); ++k) {
    }
  }

  void expectFirstOfTies() {
    const testing::ScopedTrace trace(__FILE__, __LINE__, describe());
    solver->select(selection, second);
    const double up = reference.extremes(0).up;
    std::vector<unsigned> ties;
    for (const unsigned t : reference.active)
      if (reference.isUpper(t) && reference.violation(t) == up) ties.push_back(t);
    EXPECT_GT(ties.size(), 1U);
    EXPECT_EQ(selection.index, ties.front());
  }

  void shrink() {
    const testing::ScopedTrace trace(__FILE__, __LINE__, describe());
    solver->select(selection, second);
    std::vector<signed char> marks(reference.count(), 0);
    solver->markShrinkable(selection, second, marks);
    std::vector<unsigned> left;
    for (const unsigned t : reference.active) {
      const bool other = reference.shape.twoGroups && !reference.isPositive(t);
      const auto [up, low] = other ? second.beta : selection.beta;
      const double v = reference.violation(t);
      const bool marked =
          reference.isUpper(t) ? !reference.isLower(t) && v < low : reference.isLower(t) && v > up;
      EXPECT_EQ(marks[t] != 0, marked) << "variable " << t;
      if (marks[t] == 0) left.push_back(t);
      marks[t] = 0;
    }
    EXPECT_EQ(std::count(marks.begin(), marks.end(), 0), static_cast<long>(marks.size()));
    activate(left);
  }

  void activateAll() {
    std::vector<unsigned> all(reference.count());
    for (unsigned t = 0; t < all.size(); ++t) all[t] = t;
    activate(all);
  }

 private:
  static constexpr double tolerance = 1e-10;

  void begin() {
    const testing::ScopedTrace trace(__FILE__, __LINE__, describe());
    int blocks = 0;
    solver->begin(reference.task(), [&blocks] { ++blocks; });
    EXPECT_EQ(blocks > 0, !reference.shape.fromZero);
    takeGradient();
  }

  void activate(const std::vector<unsigned>& variables) {
    solver->activate(variables);
    reference.active = variables;
  }

  void takeGradient() {
    std::vector<double> alpha(reference.count());
    std::vector<double> gradient(reference.count());
    solver->read(alpha, gradient);
    for (std::size_t t = 0; t < alpha.size(); ++t) {
      EXPECT_NEAR(alpha[t], reference.alpha[t], tolerance) << "multiplier " << t;
      EXPECT_NEAR(gradient[t], reference.gradient[t], tolerance) << "gradient " << t;
    }
    reference.alpha = alpha;
    reference.gradient = gradient;
  }

  void expectSelection(const Selection& found, int group) {
    const auto [up, low] = reference.extremes(group);
    EXPECT_EQ(found.beta.up, up) << "group " << group;
    EXPECT_EQ(found.beta.low, low) << "group " << group;
    if (std::isinf(up)) {
      EXPECT_EQ(found.index, zelsvm::noIndex);
    } else {
      EXPECT_TRUE(found.index < reference.count() && reference.isInGroup(found.index, group) &&
                  reference.isUpper(found.index) && reference.violation(found.index) == up)
          << found.index;
    }
  }

  bool step() {
    solver->select(selection, second);
    expectSelection(selection, 0);
    expectSelection(second, reference.shape.twoGroups ? 1 : 0);
    if (testing::Test::HasFailure() || selection.index == zelsvm::noIndex ||
        second.index == zelsvm::noIndex)
      return false;
    double best = std::numeric_limits<double>::infinity();
    for (const unsigned t : reference.active) best = std::min(best, gainOf(t));
    const auto [i, j, deltaI, deltaJ] = solver->movePair(selection, second);
    if (std::isinf(best)) {
      EXPECT_EQ(j, zelsvm::noIndex);
      return false;
    }
    EXPECT_LT(j, reference.count());
    if (j >= reference.count()) return false;
    EXPECT_EQ(i, firstOf(j).index);
    EXPECT_NEAR(gainOf(j), best, tolerance * std::abs(best)) << "pair " << i << ", " << j;
    const auto [wayI, wayJ] = reference.pairStep(i, j);
    // The way without bounds is rounded before it is cut.
    const double rounding = tolerance + 1e-15 * reference.unboundedStep(i, j);
    EXPECT_NEAR(deltaI, wayI, rounding) << "pair " << i << ", " << j;
    EXPECT_NEAR(deltaJ, wayJ, rounding) << "pair " << i << ", " << j;
    reference.alpha[i] += deltaI;
    reference.alpha[j] += deltaJ;
    reference.updateGradient();
    solver->updateGradient();
    takeGradient();
    return true;
  }

  [[nodiscard]] const Selection& firstOf(unsigned j) const {
    return reference.isInGroup(j, 0) ? selection : second;
  }
  [[nodiscard]] double gainOf(unsigned j) const {
    return reference.gain(firstOf(j).index, firstOf(j).beta.up, j);
  }

  [[nodiscard]] std::string describe() const {
    const SolverShape& s = reference.shape;
    return std::to_string(s.samples) + " samples, kernel " + std::to_string(s.kernel) +
           (s.sparse ? ", sparse" : "") + (s.twoGroups ? ", two groups" : "") +
           (s.twice ? ", two variables a sample" : "");
  }

  ReferenceSolver reference;
  std::unique_ptr<zelsvm::SolverMachine> own;
  zelsvm::SolverMachine* solver;
  Selection selection{};
  Selection second{};
};

}  // namespace zeltest
