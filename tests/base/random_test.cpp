#include "base/random.h"

#include <gtest/gtest.h>

#include <vector>

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
  EXPECT_EQ(draw(0, 1), std::vector{38});
  const std::vector<int> all = draw(7, 1000);
  for (const int count : {0, 1, 2, 5, 999}) {
    EXPECT_EQ(draw(zel::seedBehind(7, static_cast<std::uint64_t>(count)), 1),
              std::vector{all[static_cast<std::size_t>(count)]});
    draw(7, count);
    EXPECT_EQ(draw(zel::randomSeedHere(), 1), std::vector{all[static_cast<std::size_t>(count)]});
  }
}

}  // namespace
