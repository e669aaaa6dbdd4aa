// The synthetic data of the test tool.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <vector>

#include "shell/command_line.h"
#include "zeldplus/inc/zelrandom.h"

namespace {

using zelsvm_opt::ZelSvmOpt;
using zeltest::parse;

TEST(RandomData, HoldsTheQuotientsOfTheSequence) {
  constexpr int count = 200 * 500;
  std::vector<double> expected(count);
  zel::seedRandom(7);
  for (double& value : expected) value = zel::nextRandom() == 32767 ? 1.0 : 0.0;
  ASSERT_GT(std::count(expected.begin(), expected.end(), 1.0), 0) << "a seed that shows nothing";

  const ZelSvmOpt options = parse({"zelsvm-test", "-M", "200", "-N", "500"});
  zel::seedRandom(7);
  const double* const features = options.randomFeatures();
  EXPECT_EQ(std::vector<double>(features, features + count), expected);
  EXPECT_EQ(options.randomFeatures(), features) << "drawn once only";
}

TEST(RandomData, LabelsFollowTheFeaturesInTheSequence) {
  constexpr int count = 400000;
  const ZelSvmOpt options = parse({"zelsvm-test", "-N", "400000"});
  std::vector<double> expected(count);
  zel::seedRandom(7);
  for (int i = 0; i < 5 * count; ++i) zel::nextRandom();
  for (double& label : expected) label = zel::nextRandom() == 32767 ? 1.0 : -1.0;
  ASSERT_GT(std::count(expected.begin(), expected.end(), 1.0), 0) << "a seed that shows nothing";

  zel::seedRandom(7);
  options.randomFeatures();
  const double* const labels = options.randomLabels();
  EXPECT_EQ(std::vector<double>(labels, labels + count), expected);
  EXPECT_EQ(options.randomLabels(), labels) << "drawn once only";
}

TEST(RandomData, ImpossibleSizesAreRefused) {
  // The product of these two counts wraps around to 0.
  const ZelSvmOpt wrapping = parse({"zelsvm-test", "-M", "4294967296", "-N", "4294967296"});
  EXPECT_THROW(wrapping.randomFeatures(), std::bad_alloc);
  const ZelSvmOpt large = parse({"zelsvm-test", "-N", "1000000000000000"});
  EXPECT_THROW(large.randomLabels(), std::bad_alloc);
}

}  // namespace
