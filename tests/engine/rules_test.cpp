// The numerical rules as functions of scalars.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "zeldplus/zelsvm/engine/smo_rules.h"

namespace {

using zelsvm::PairValues;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double tiny = std::numeric_limits<double>::denorm_min();

TEST(KernelRules, BinaryPowerIsTheRepeatedProduct) {
  for (const double t : {-3.0, -1.0, -0.5, 0.0, 1.0, 2.0, 3.0}) {
    double product = 1;  // exact throughout
    for (unsigned d = 0; d <= 33; ++d, product *= t)
      EXPECT_EQ(zelsvm::binaryPower(t, d, 1.0), product) << t << "^" << d;
  }
  EXPECT_EQ(zelsvm::binaryPower(-1.0, 4294967295u, 1.0), -1.0);
  EXPECT_EQ(zelsvm::binaryPower(2.0, 1024, 1.0), infinity);
  EXPECT_TRUE(std::isnan(zelsvm::binaryPower(nan, 1, 1.0)));
  EXPECT_EQ(zelsvm::binaryPower(infinity, 2, 1.0), infinity);
}

TEST(KernelRules, DegreesAreTruncatedAndSaturate) {
  EXPECT_EQ(zelsvm::effectiveDegree(3), 3u);
  EXPECT_EQ(zelsvm::effectiveDegree(2.7), 2u);
  EXPECT_EQ(zelsvm::effectiveDegree(0.999), 0u);
  EXPECT_EQ(zelsvm::effectiveDegree(-2), 0u);
  EXPECT_EQ(zelsvm::effectiveDegree(nan), 0u);
  EXPECT_EQ(zelsvm::effectiveDegree(4294967294.9), 4294967294u);
  EXPECT_EQ(zelsvm::effectiveDegree(4294967296.0), 4294967295u);
  EXPECT_EQ(zelsvm::effectiveDegree(infinity), 4294967295u);
}

TEST(SmoRules, SetsAtAndBetweenTheBounds) {
  constexpr double c = 2;
  struct Row {
    bool positive;
    double alpha;
    bool upper;
    bool lower;
  };
  for (const auto& [positive, alpha, upper, lower] :
       {Row{true, 0, true, false}, Row{true, tiny, true, true}, Row{true, 1, true, true},
        Row{true, std::nextafter(c, 0), true, true}, Row{true, c, false, true},
        Row{false, 0, false, true}, Row{false, tiny, true, true}, Row{false, 1, true, true},
        Row{false, std::nextafter(c, 0), true, true}, Row{false, c, true, false},
        Row{true, nan, false, false}, Row{false, nan, false, false}}) {
    EXPECT_EQ(zelsvm::inUpperSet(positive, alpha, c), upper) << positive << " " << alpha;
    EXPECT_EQ(zelsvm::inLowerSet(positive, alpha, c), lower) << positive << " " << alpha;
  }
}

TEST(SmoRules, CurvatureIsFlooredWhereItIsNotPositive) {
  EXPECT_EQ(zelsvm::pairCurvature(5.0, 1.0), 3.0);
  EXPECT_EQ(zelsvm::pairCurvature(2.0, 1.0), 1e-12);
  EXPECT_EQ(zelsvm::pairCurvature(1.0, 1.0), 1e-12);
  EXPECT_EQ(zelsvm::pairCurvature(tiny, 0.0), tiny);
  EXPECT_TRUE(std::isnan(zelsvm::pairCurvature(nan, 1.0)));
  EXPECT_EQ(zelsvm::pairGain(3.0, 2.0), -4.5);
}

TEST(SmoRules, BoundVariablesBeyondTheWorkingSetShrink) {
  constexpr double c = 1;
  constexpr double up = 0.5;
  constexpr double low = -0.5;
  for (const double a : {0.0, 0.5, 1.0})
    for (const double v : {-1.0, -0.5, 0.0, 0.5, 1.0})
      for (const bool positive : {true, false}) {
        // Only a variable that may not grow (shrink) in its direction can lie above (below).
        const bool mayGrow = positive ? a < c : a > 0;
        const bool mayShrink = positive ? a > 0 : a < c;
        const bool expected = (!mayGrow && v > up) || (!mayShrink && v < low);
        EXPECT_EQ(zelsvm::isShrinkable(positive, a, c, v, up, low), expected)
            << positive << " " << a << " " << v;
      }
}

// The minimiser of the pair's objective on the feasible segment, whose ends are found directly.
PairValues bestOnSegment(bool sameSign, PairValues a, double delta, PairValues c) {
  // a_j moves by t, a_i by -t (same sign) or t.
  const double first = sameSign ? a.i - c.i : -a.i;
  const double last = sameSign ? a.i : c.i - a.i;
  const double t = std::clamp(delta, std::max(first, -a.j), std::min(last, c.j - a.j));
  return {sameSign ? a.i - t : a.i + t, a.j + t};
}

TEST(SmoRules, StepsEndAtTheConstrainedMinimum) {
  // Quarters are exact in binary, so the results must be as well.
  std::set<int> cases;  // which bounds were met, by sign
  for (const bool sameSign : {true, false})
    for (const PairValues c : {PairValues{1, 1}, PairValues{1, 2}, PairValues{2, 0.5}})
      for (double ai = 0; ai <= c.i; ai += 0.25)
        for (double aj = 0; aj <= c.j; aj += 0.25)
          for (double delta = -4; delta <= 4; delta += 0.25) {
            const PairValues n = zelsvm::clippedPair(sameSign, {ai, aj}, delta, c);
            const PairValues best = bestOnSegment(sameSign, {ai, aj}, delta, c);
            EXPECT_EQ(n.i, best.i) << sameSign << " " << ai << " " << aj << " " << delta;
            EXPECT_EQ(n.j, best.j) << sameSign << " " << ai << " " << aj << " " << delta;
            const bool clipped = n.j != aj + delta;
            cases.insert((sameSign ? 100 : 0) + 10 * (n.i == 0 ? 1 : n.i == c.i ? 2 : 0) +
                         (n.j == 0 ? 1 : n.j == c.j ? 2 : 0) + (clipped ? 1000 : 0));
          }
  for (const int sign : {0, 100})
    for (const int bound : {10, 20, 1, 2}) EXPECT_TRUE(cases.contains(1000 + sign + bound));
}

TEST(SmoRules, StepFollowsTheGradient) {
  // Along the feasible direction the objective's slope is y_i y_j G_i - G_j times the step of a_j.
  EXPECT_EQ(zelsvm::pairStep(true, 3, 1, 4), 0.5);
  EXPECT_EQ(zelsvm::pairStep(false, -3, -1, 2), 2);
  EXPECT_EQ(zelsvm::updatedGradient(1, -1, 2, 3, 4, 5), -25);
}

}  // namespace
