// The numerical rules as functions of scalars.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "rules/smo_rules.h"

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
}

TEST(KernelRules, DegreesAreTruncatedAndSaturate) {
  EXPECT_EQ(zelsvm::effectiveDegree(2.7), 2u);
  EXPECT_EQ(zelsvm::effectiveDegree(0.999), 0u);
  EXPECT_EQ(zelsvm::effectiveDegree(-2), 0u);
  EXPECT_EQ(zelsvm::effectiveDegree(nan), 0u);
  EXPECT_EQ(zelsvm::effectiveDegree(4294967294.9), 4294967294u);
  EXPECT_EQ(zelsvm::effectiveDegree(infinity), 4294967295u);
}

TEST(SmoRules, CurvatureIsFlooredWhereItIsNotPositive) {
  EXPECT_EQ(zelsvm::pairCurvature(5.0, 1.0), 3.0);
  EXPECT_EQ(zelsvm::pairCurvature(2.0, 1.0), 1e-12);
  EXPECT_EQ(zelsvm::pairCurvature(1.0, 1.0), 1e-12);
  EXPECT_EQ(zelsvm::pairCurvature(tiny, 0.0), tiny);
  EXPECT_TRUE(std::isnan(zelsvm::pairCurvature(nan, 1.0)));
}

// The minimiser of the pair's objective on the feasible segment, whose ends are found directly.
PairValues bestOnSegment(bool sameSign, PairValues a, double delta, PairValues c) {
  const double first = sameSign ? a.i - c.i : -a.i;
  const double last = sameSign ? a.i : c.i - a.i;
  const double t = std::clamp(delta, std::max(first, -a.j), std::min(last, c.j - a.j));
  return {sameSign ? a.i - t : a.i + t, a.j + t};
}

TEST(SmoRules, StepsEndAtTheConstrainedMinimum) {
  std::set<int> clips;  // signs and bounds that were met
  for (const bool sameSign : {true, false})
    for (const PairValues c : {PairValues{1, 1}, PairValues{1, 2}, PairValues{2, 0.5}})
      for (double ai = 0; ai <= c.i; ai += 0.25)  // quarters are exact, so results must be
        for (double aj = 0; aj <= c.j; aj += 0.25)
          for (double delta = -4; delta <= 4; delta += 0.25) {
            const PairValues n = zelsvm::clippedPair(sameSign, {ai, aj}, delta, c);
            const PairValues best = bestOnSegment(sameSign, {ai, aj}, delta, c);
            EXPECT_EQ(n.i, best.i) << sameSign << " " << ai << " " << aj << " " << delta;
            EXPECT_EQ(n.j, best.j) << sameSign << " " << ai << " " << aj << " " << delta;
            if (n.j == aj + delta) continue;
            for (const auto& [bound, met] :
                 {std::pair{1, n.i == 0}, {2, n.i == c.i}, {3, n.j == 0}, {4, n.j == c.j}})
              if (met) clips.insert(sameSign ? bound : -bound);
          }
  EXPECT_EQ(clips.size(), 8);
}

// As pairs of equal samples take them.
TEST(SmoRules, HugeStepsKeepSumOrDifference) {
  for (const double delta : {-3e11, 1e9, 7e15}) {
    const PairValues same = zelsvm::clippedPair(true, {0.1, 0.3}, delta, {1, 1});
    EXPECT_NEAR(same.i + same.j, 0.1 + 0.3, 1e-15);
    const PairValues opposite = zelsvm::clippedPair(false, {0.3, 0.1}, delta, {1, 1});
    EXPECT_NEAR(opposite.i - opposite.j, 0.3 - 0.1, 1e-15);
  }
}

}  // namespace
