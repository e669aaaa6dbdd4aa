// When a solve counts as stalled, from what its looks see.
#include "solver/stall_watch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using zelsvm::StallWatch;

// Looks until a solve of 10 variables with bounds of 1 has stalled, at most so many times.
int looks(int most, const std::function<double(int)>& objective,
          const std::function<double(int)>& gap, bool all = true) {
  StallWatch watch(10, 10);
  std::uint64_t iterations = 0;
  for (int look = 1; look <= most; ++look) {
    while (!watch.isDue(iterations)) iterations += 10;
    watch.see(gap(look), all);
    if (watch.hasStalled(iterations, objective(look), std::abs(objective(look)))) return look;
  }
  return most + 1;
}

TEST(StallWatch, EndsWhatRoundingMoves) {
  const auto wide = [](int) { return 1e9; };
  EXPECT_EQ(looks(
                9, [](int) { return -3.0; }, wide),
            2);
  EXPECT_EQ(looks(
                9, [](int) { return NAN; }, wide),
            1);
  EXPECT_EQ(looks(
                9, [](int look) { return -3e-16 * look - 3; }, wide),
            2);
  // It reaches 10 times the gap below its first look, and no further.
  const auto falling = [](int look) { return -7.0 * look; };
  const auto one = [](int) { return 1.0; };
  EXPECT_EQ(looks(9, falling, one), 3);
  EXPECT_EQ(looks(9, falling, one, false), 10) << "of the shrunk variables nothing is known";
}

TEST(StallWatch, EndsWhatGetsNowhere) {
  const auto slow = [](int look) { return 1e-8 * -look; };
  const auto open = [](int) { return 1.0; };
  EXPECT_EQ(looks(99, slow, open), 11);
  EXPECT_EQ(looks(
                99, [](int look) { return 1e-6 * -look; }, open),
            100);
  // The gap comes down at times.
  EXPECT_EQ(looks(99, slow, [](int look) { return std::pow(0.8, look / 9); }), 100);
}

}  // namespace
