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

}  // namespace
