// Kernel rows and blocks against the kernel functions as plain loops.
#include "platform/host/rows/row_source.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/samples.h"
#include "support/tested_machine.h"

namespace {

using zelsvm::ParameterChecks;
using zelsvm::RowSource;
using zelsvm::SvmContext;
using zeltest::DataSet;
using zeltest::kernelValue;
using zeltest::Samples;
using Numbers = std::vector<double>;

// A source of the samples' rows under the context.
struct Rows {
  Rows(const Samples& samples, const SvmContext<double>& context, std::uint64_t megabytes = 0)
      : set(samples, context), count(samples.rows()) {
    source.assign({.samples = &set.data().matrix(),
                   .kernel = context.kernelSettings(samples.cols),
                   .signs = {},
                   .start = {},
                   .linearTerm = {},
                   .Cp = 1,
                   .Cn = 1,
                   .cacheMegabytes = megabytes});
  }

  Numbers row(std::uint64_t i) {
    const double* const values = source.row(i);
    return {values, values + count};
  }

  DataSet set;
  std::uint64_t count;
  RowSource source;
};

class RowSourceTest : public testing::TestWithParam<std::tuple<int, bool>> {
 protected:
  static constexpr std::uint64_t rows = 37;
  static constexpr std::uint64_t cols = 9;

  RowSourceTest()
      : context({.kernelType = std::get<0>(GetParam()),
                 .degree = 2.9,
                 .gamma = 0.4,
                 .coef0 = 0.3,
                 .sparse = std::get<1>(GetParam())},
                ParameterChecks::training, zeltest::testedMachine()),
        samples(zeltest::classSamples(rows, cols, {1, 2}, 5)) {}

  [[nodiscard]] double expected(std::uint64_t i, std::uint64_t j) const {
    return kernelValue(context, samples.row(i), samples.row(j), cols);
  }

  SvmContext<double> context;
  Samples samples;
};

TEST_P(RowSourceTest, RowsHoldTheKernelFunction) {
  Rows kernel(samples, context);
  for (int pass = 0; pass < 2; ++pass)  // 16 slots: the second pass finds some rows evicted
    for (const std::uint64_t i : {0, 5, 36, 5, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}) {
      const Numbers row = kernel.row(i);
      for (std::uint64_t r = 0; r < rows; ++r)
        EXPECT_NEAR(row[r], expected(i, r), 1e-13) << i << ", " << r;
    }
}

TEST_P(RowSourceTest, AddsRowsWithWeightsAndKeepsItsCache) {
  Rows kernel(samples, context);
  const Numbers before = kernel.row(3);
  Numbers weights(rows, 0.0);
  weights[1] = -2;
  weights[rows - 1] = 0.5;
  zelsvm::HostVector<double> sums(rows + 8);
  sums.fill(3);
  std::uint64_t calls = 0;
  kernel.source.addRows(weights, sums.data(), [&calls] { ++calls; });
  EXPECT_EQ(calls, (rows + 15) / 16);
  for (std::uint64_t r = 0; r < rows; ++r)
    EXPECT_NEAR(sums[r], 3 - 2 * expected(1, r) + 0.5 * expected(rows - 1, r), 1e-13);
  EXPECT_EQ(kernel.row(3), before);
  EXPECT_EQ(kernel.source.hitRate(), 0.5);
}

TEST_P(RowSourceTest, KnowsItsDiagonal) {
  const Rows kernel(samples, context);
  const double* const diagonal = kernel.source.diagonal();
  EXPECT_EQ(diagonal == nullptr, context.kernelType == zelsvm::SVM_KERNEL_RADIAL);
  for (std::uint64_t r = 0; diagonal != nullptr && r < rows; ++r)
    EXPECT_NEAR(diagonal[r], expected(r, r), 1e-13);
}

std::string nameOfCase(const testing::TestParamInfo<std::tuple<int, bool>>& tested) {
  const auto& [kernel, sparse] = tested.param;
  return std::string(zelsvm::nameOf(static_cast<zelsvm::SVM_KERNEL>(kernel))) +
         (sparse ? "Sparse" : "Dense");
}

INSTANTIATE_TEST_SUITE_P(Kernels, RowSourceTest,
                         testing::Combine(testing::Range(0, 4), testing::Bool()), nameOfCase);

// Whatever the products are, even those that overflow.
TEST(PolynomialKernel, DegreeBelowOneIsExactlyOne) {
  const SvmContext<double> context({.kernelType = 1, .degree = 0.5}, ParameterChecks::training,
                                   zeltest::testedMachine());
  Rows kernel({2, {1e200, 1e200, 0, 3}, {1, -1}}, context);
  EXPECT_EQ(kernel.row(0), (Numbers{1, 1}));
  EXPECT_EQ(kernel.source.diagonal()[0], 1);
}

}  // namespace
