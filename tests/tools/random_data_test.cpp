// The synthetic data of the test tool.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <vector>

#include "base/random.h"
#include "tools/command_line.h"

namespace {

using zelsvm_opt::ZelSvmOpt;
using zeltest::parse;

TEST(RandomData, HoldsTheQuotientsOfTheSequence) {
  constexpr int count = 400000;
  const ZelSvmOpt options = parse({"zelsvm-test", "-M", "2", "-N", "400000"});
  std::vector<double> features(2 * count);
  std::vector<double> labels(count);
  zel::seedRandom(7);
  for (double& value : features) value = zel::nextRandom() == 32767 ? 1.0 : 0.0;
  for (double& label : labels) label = zel::nextRandom() == 32767 ? 1.0 : -1.0;
  for (const auto* drawn : {&features, &labels})
    ASSERT_GT(std::count(drawn->begin(), drawn->end(), 1.0), 0) << "a seed that shows nothing";

  zel::seedRandom(7);
  const double* const x = options.randomFeatures();
  const double* const y = options.randomLabels();
  EXPECT_EQ(std::vector<double>(x, x + 2 * count), features);
  EXPECT_EQ(std::vector<double>(y, y + count), labels);
  EXPECT_EQ(options.randomFeatures(), x) << "drawn once only";
  EXPECT_EQ(options.randomLabels(), y) << "drawn once only";
}

TEST(RandomData, ImpossibleSizesAreRefused) {
  // The product of these two counts wraps around to 0.
  const ZelSvmOpt wrapping = parse({"zelsvm-test", "-M", "4294967296", "-N", "4294967296"});
  EXPECT_THROW(wrapping.randomFeatures(), std::bad_alloc);
  const ZelSvmOpt large = parse({"zelsvm-test", "-N", "1000000000000000"});
  EXPECT_THROW(large.randomLabels(), std::bad_alloc);
}

}  // namespace
