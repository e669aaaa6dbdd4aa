// Kernel rows and blocks against the kernel functions as plain loops.
#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/host_vectors.h"
#include "support/samples.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/rskernel.h"

namespace {

using zelsvm::ParameterChecks;
using zelsvm::SmoKernel;
using zelsvm::SVM_KERNEL;
using zelsvm::SvmContext;
using zeltest::DataSet;
using zeltest::kernelValue;
using zeltest::Samples;

std::vector<double> fromDevice(const double* values, std::uint64_t count) {
  return zeltest::valuesOf(zel::DeviceVector<double>(count, const_cast<double*>(values)));
}

// As a solver publishes them.
void publishConstants(const SvmContext<double>& context, std::uint64_t cols) {
  const double gamma = context.effectiveGamma(cols);
  EXPECT_EQ(cudaMemcpyToSymbol(zelsvm::zelsvm_gamma, &gamma, sizeof gamma), cudaSuccess);
  EXPECT_EQ(cudaMemcpyToSymbol(zelsvm::zelsvm_coef0, &context.coef0, sizeof(double)), cudaSuccess);
  EXPECT_EQ(cudaMemcpyToSymbol(zelsvm::zelsvm_degree, &context.degree, sizeof(double)),
            cudaSuccess);
}

class SmoKernelTest : public testing::TestWithParam<std::tuple<int, bool>> {
 protected:
  static constexpr std::uint64_t rows = 37;
  static constexpr std::uint64_t cols = 9;

  SmoKernelTest()
      : context({.kernelType = std::get<0>(GetParam()),
                 .degree = 2.9,
                 .gamma = 0.4,
                 .coef0 = 0.3,
                 .sparse = std::get<1>(GetParam())},
                ParameterChecks::training),
        samples(zeltest::classSamples(rows, cols, {1, 2}, 5)),
        set(samples, context) {
    publishConstants(context, cols);
  }

  void initialize(std::uint64_t variables) {
    kernel.initialize(set.data().matrix(), context.kernelType, variables, 0);
  }
  [[nodiscard]] double expected(std::uint64_t i, std::uint64_t j) const {
    return kernelValue(context, samples.row(i), samples.row(j), cols);
  }

  SvmContext<double> context;
  Samples samples;
  DataSet set;
  SmoKernel<double> kernel;
};

TEST_P(SmoKernelTest, RowsHoldTheKernelFunction) {
  initialize(rows);
  for (int pass = 0; pass < 2; ++pass)  // 16 slots: the second pass finds some rows evicted
    for (const std::uint64_t i : {0, 5, 36, 5, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}) {
      const std::vector<double> row = fromDevice(kernel.getRow(i), rows);
      for (std::uint64_t r = 0; r < rows; ++r)
        EXPECT_NEAR(row[r], expected(i, r), 1e-13) << i << ", " << r;
    }
}

// Few stored values, in several stretches of samples.
TEST_P(SmoKernelTest, RowsOfMostlyEmptySamplesHoldTheKernelFunction) {
  constexpr std::uint64_t many = 4500;
  constexpr std::uint64_t wide = 60;
  std::mt19937 generator(3);
  Samples thin{wide, std::vector<double>(many * wide), std::vector<double>(many, 1)};
  for (std::uint64_t i = 0; i < many; ++i)
    for (std::uint64_t k = i % 5; k > 0; --k)
      thin.values[i * wide + generator() % wide] = static_cast<double>(generator() % 9) / 8;
  DataSet thinSet(thin, context);
  publishConstants(context, wide);
  kernel.initialize(thinSet.data().matrix(), context.kernelType, many, 0);
  for (const std::uint64_t i : {std::uint64_t{4}, std::uint64_t{0}, many - 1}) {
    const std::vector<double> row = fromDevice(kernel.getRow(i), many);
    for (std::uint64_t r = 0; r < many; ++r)
      ASSERT_NEAR(row[r], kernelValue(context, thin.row(i), thin.row(r), wide), 1e-13);
  }
}

TEST_P(SmoKernelTest, BlocksHoldTheKernelFunctionAndEmptyTheCache) {
  initialize(rows);
  const std::vector<double> before = fromDevice(kernel.getRow(3), rows);
  for (const auto& [first, count] : {std::pair{0, 16}, {16, 16}, {32, 5}, {36, 1}}) {
    const double* const block =
        kernel.computeBlock(static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(count));
    for (std::uint64_t c = 0; c < static_cast<std::uint64_t>(count); ++c) {
      const std::vector<double> column = fromDevice(block + c * kernel.pitch(), rows);
      for (std::uint64_t r = 0; r < rows; ++r)
        EXPECT_NEAR(column[r], expected(static_cast<std::uint64_t>(first) + c, r), 1e-13);
    }
  }
  EXPECT_EQ(fromDevice(kernel.getRow(3), rows), before);
}

TEST_P(SmoKernelTest, TheSecondHalfOfARegressionSharesRows) {
  initialize(2 * rows);
  const double* const row = kernel.getRow(3);
  EXPECT_EQ(kernel.getRow(rows + 3), row);
  EXPECT_EQ(fromDevice(kernel.getRow(2 * rows - 1), rows),
            fromDevice(kernel.getRow(rows - 1), rows));
}

TEST_P(SmoKernelTest, KnowsItsDiagonal) {
  initialize(rows);
  const std::vector<double> diagonal = fromDevice(kernel.diagonal(), rows);
  const bool radial = context.kernelType == zelsvm::SVM_KERNEL_RADIAL;  // keeps squared norms
  for (std::uint64_t r = 0; r < rows; ++r)
    EXPECT_NEAR(diagonal[r],
                radial ? zeltest::product(samples.row(r), samples.row(r), cols) : expected(r, r),
                1e-13);
}

std::string nameOfCase(const testing::TestParamInfo<std::tuple<int, bool>>& tested) {
  const auto& [kernel, sparse] = tested.param;
  return std::string(zelsvm::nameOf(static_cast<SVM_KERNEL>(kernel))) +
         (sparse ? "Sparse" : "Dense");
}

INSTANTIATE_TEST_SUITE_P(Kernels, SmoKernelTest,
                         testing::Combine(testing::Range(0, 4), testing::Bool()), nameOfCase);

// Whatever the products are, even those that overflow.
TEST(PolynomialKernel, DegreeBelowOneIsExactlyOne) {
  SvmContext<double> context({.kernelType = 1, .degree = 0.5}, ParameterChecks::training);
  DataSet set({2, {1e200, 1e200, 0, 3}, {1, -1}}, context);
  publishConstants(context, 2);
  SmoKernel<double> kernel;
  kernel.initialize(set.data().matrix(), context.kernelType, 2, 1);
  EXPECT_EQ(fromDevice(kernel.getRow(0), 2), (std::vector<double>{1, 1}));
  EXPECT_EQ(fromDevice(kernel.diagonal(), 1)[0], 1);
}

}  // namespace
