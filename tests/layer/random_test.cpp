#include <gtest/gtest.h>

#include <vector>

#include "zeldplus/inc/zelrandom.h"

namespace {

std::vector<int> draw(unsigned seed, int count) {
  zel::seedRandom(seed);
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(zel::nextRandom());
  return numbers;
}

TEST(Random, ClassicSequence) {
  EXPECT_EQ(draw(1, 10),
            (std::vector{41, 18467, 6334, 26500, 19169, 15724, 11478, 29358, 26962, 24464}));
}

TEST(Random, SeedsDecideTheSequence) {
  EXPECT_EQ(draw(7, 1000), draw(7, 1000));
  EXPECT_NE(draw(7, 10), draw(8, 10));
  EXPECT_EQ(draw(0, 1), std::vector{38});
  const std::vector<int> all = draw(7, 1000);
  for (const int count : {0, 1, 2, 5, 999}) {
    EXPECT_EQ(draw(zel::seedBehind(7, static_cast<std::uint64_t>(count)), 1),
              std::vector{all[static_cast<std::size_t>(count)]});
    draw(7, count);
    EXPECT_EQ(draw(zel::randomSeedHere(), 1), std::vector{all[static_cast<std::size_t>(count)]});
  }
}

TEST(Random, SpreadsOverFifteenBits) {
  std::vector<int> counts(16);
  for (const int number : draw(3, 160000)) {
    ASSERT_GE(number, 0);
    ASSERT_LE(number, zel::randomMax);
    ++counts[static_cast<std::size_t>(number) >> 11];
  }
  // About ten standard deviations around the 10,000 of an even spread.
  for (const int count : counts) EXPECT_NEAR(count, 10000, 1000);
}

}  // namespace
