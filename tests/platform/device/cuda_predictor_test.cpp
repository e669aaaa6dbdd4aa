// What decision values on a device must not depend on: layouts and blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/cuda/machine/cuda_machine.h"
#include "platform/device/device_array.h"
#include "platform/device/sample_rows.h"
#include "support/samples.h"

namespace {

using Values = std::vector<double>;
using zeltest::SampleMatrix;

constexpr std::size_t vectorCount = 150;
constexpr std::size_t testCount = 37;
constexpr std::size_t pairs = 3;

// Of three classes.
class CudaPredictor : public testing::Test {
 protected:
  // The decision values of all samples, so many at a time; 0: as the machine advises.
  [[nodiscard]] Values decide(int kernel, bool sparseVectors, bool sparseTests,
                              std::size_t width) const {
    const SampleMatrix vectors(vectorRows, sparseVectors);
    const SampleMatrix tests(testRows, sparseTests);
    const auto predictor = machine.makePredictor(
        {&vectors.get(), zeltest::kernelSettings(kernel), {0, 50, 90, 150}, coefficients, rho});
    if (width == 0) width = predictor->blockSize(tests.get());
    EXPECT_GE(width, 1U);
    Values values(pairs * testCount);
    for (std::size_t first = 0; first < testCount; first += width) {
      const std::size_t count = std::min(width, testCount - first);
      Values part(pairs * count);
      predictor->decide(tests.get(), first, count, part.data());
      for (std::size_t f = 0; f < pairs; ++f)
        std::copy_n(&part[f * count], count, &values[f * testCount + first]);
    }
    return values;
  }

  const zelsvm::CudaMachine machine{0};
  const zeltest::Rows vectorRows = zeltest::sampleRows(vectorCount, 6, true, 1);
  const zeltest::Rows testRows = zeltest::sampleRows(testCount, 8, true, 2);
  const Values coefficients = randomValues(2 * vectorCount, 3);
  const Values rho = randomValues(pairs, 4);
};

TEST_F(CudaPredictor, AnyLayoutsOfVectorsAndSamplesAgree) {
  for (const int kernel : zeltest::allKernels) {
    const Values expected = decide(kernel, false, false, 0);
    for (const bool sparseTests : {false, true}) {
      const Values values = decide(kernel, true, sparseTests, 0);
      for (std::size_t i = 0; i < values.size(); ++i)
        ASSERT_NEAR(values[i], expected[i], 1e-11) << "kernel " << kernel << ", value " << i;
    }
    EXPECT_EQ(decide(kernel, false, true, 0), expected) << "samples are laid out densely";
  }
}

TEST_F(CudaPredictor, BlocksGiveTheSameBits) {
  const Values whole = decide(zelsvm::SVM_KERNEL_RADIAL, false, true, testCount);
  for (const std::size_t width : {0, 1, 16})
    EXPECT_EQ(decide(zelsvm::SVM_KERNEL_RADIAL, false, true, width), whole) << width;
}

}  // namespace
