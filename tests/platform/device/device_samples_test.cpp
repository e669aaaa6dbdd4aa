// Products of samples on a device, whichever way their matrix stores them.
#include "platform/cuda/machine/device_samples.h"

#include <gtest/gtest.h>

#include "platform/device/device_array.h"
#include "support/matrices.h"

namespace {

using zeltest::Storage;
using zeltest::StoredMatrix;

double dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += a[k] * b[k];
  return sum;
}

TEST(DeviceSamples, HaveTheProductsOfPlainRows) {
  constexpr std::size_t rows = 29;
  for (const std::size_t cols : {7, 40})
    for (const Storage storage : {Storage::dense, Storage::sorted, Storage::messy, Storage::full}) {
      SCOPED_TRACE(zeltest::nameOf(storage) + std::to_string(cols));
      const StoredMatrix stored(storage, rows, cols, 5);
      zelsvm::LinearAlgebra libraries;
      const auto samples = zelsvm::makeDeviceSamples(*stored.matrix, libraries);
      const DeviceArray<double> single(rows);
      const DeviceArray<double> block(3 * rows);
      samples->blockProducts(samples->rows(4, 3), cols, block.data(), rows, 3);
      for (std::size_t k = 0; k < 3; ++k) {
        samples->rowProducts(single.data(), 4 + k);
        const auto alone = single.values();
        const auto together = block.values();
        for (std::size_t i = 0; i < rows; ++i) {
          const double right = dot(stored.table[i], stored.table[4 + k]);
          EXPECT_NEAR(alone[i], right, 1e-12) << k << ", " << i;
          EXPECT_NEAR(together[k * rows + i], right, 1e-12) << k << ", " << i;
        }
      }
    }
}

TEST(DeviceSamples, HaveTheRowsAndProductsOfChosenOnes) {
  const std::vector<unsigned> numbers = {9, 4, 27, 0, 28};
  constexpr std::size_t cols = 40;
  constexpr std::size_t stride = 7;
  for (const Storage storage : {Storage::dense, Storage::sorted, Storage::messy, Storage::full}) {
    SCOPED_TRACE(zeltest::nameOf(storage));
    const StoredMatrix stored(storage, 29, cols, 6);
    zelsvm::LinearAlgebra libraries;
    const auto samples = zelsvm::makeDeviceSamples(*stored.matrix, libraries);
    const DeviceArray<double> products(numbers.size() * stride);
    samples->productsWithin(numbers, products.data(), stride);
    const DeviceArray<unsigned> there(numbers);
    std::vector<double> rows(numbers.size() * cols);
    ASSERT_EQ(cudaMemcpy(rows.data(), samples->rowsOf(there.data(), numbers.size()),
                         rows.size() * sizeof(double), cudaMemcpyDeviceToHost),
              cudaSuccess);
    const auto found = products.values();
    for (std::size_t k = 0; k < numbers.size(); ++k) {
      for (std::size_t j = 0; j < cols; ++j)
        EXPECT_EQ(rows[k * cols + j], stored.table[numbers[k]][j]) << k << ", " << j;
      for (std::size_t i = 0; i < numbers.size(); ++i)
        EXPECT_NEAR(found[k * stride + i], dot(stored.table[numbers[i]], stored.table[numbers[k]]),
                    1e-12)
            << k << ", " << i;
    }
  }
}

}  // namespace
