// The samples of a data set on the device, and their dot products.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "data/matrix.h"
#include "platform/cuda/linear_algebra/linear_algebra.h"
#include "platform/cuda/runtime/device_vector.h"

namespace zelsvm {

// The libraries of one device, each made when it is first needed.
class LinearAlgebra {
 public:
  zellas::BlasContext& blas();
  zellas::SparseContext<double>& sparse();

 private:
  std::unique_ptr<zellas::BlasContext> blasContext;
  std::unique_ptr<zellas::SparseContext<double>> sparseContext;
};

// Rows of any matrix as dense rows on the device.
class DenseRows {
 public:
  // Rows first … first + count - 1, of cols elements each; they stay until the next call.
  double* load(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t first,
               std::uint64_t count);
  // Bytes that a row takes.
  static std::uint64_t rowBytes(const zelmag::AbstractMatrix<double>& matrix) {
    return matrix.cols() * sizeof(double);
  }

 private:
  zel::DeviceVector<double> rows;
  zelsvm::HostVector<double> staged;
};

// A copy of a matrix on the device. The matrix outlives it.
class DeviceSamples {
 public:
  DeviceSamples() = default;
  DeviceSamples(const DeviceSamples&) = delete;
  DeviceSamples& operator=(const DeviceSamples&) = delete;
  virtual ~DeviceSamples() = default;

  // result[i] = dot(sample i, the given sample), for all samples.
  virtual void rowProducts(double* result, std::uint64_t sample) = 0;
  // result[i + k * resultStride] = dot(sample i, block row k) for k < count. The rows are dense and
  // blockStride elements apart, at least cols; what lies beyond cols does not take part.
  virtual void blockProducts(double* block, std::uint64_t blockStride, double* result,
                             std::uint64_t resultStride, std::uint64_t count) = 0;
  // Samples first … first + count - 1 as dense rows of cols elements; they stay until the next
  // call.
  virtual double* rows(std::uint64_t first, std::uint64_t count) = 0;
  // The same for samples whose numbers the device has.
  virtual double* rowsOf(const unsigned* numbers, std::uint64_t count) = 0;
  // result[i + k * resultStride] = dot(sample numbers[i], sample numbers[k]). Loses rows.
  virtual void productsWithin(std::span<const unsigned> numbers, double* result,
                              std::uint64_t resultStride) = 0;
  [[nodiscard]] virtual std::uint64_t cols() const = 0;
  // So many rows are worth laying out at a time.
  [[nodiscard]] virtual std::uint64_t rowsAtOnce() const = 0;
};

// Sparse where the matrix is and lacks enough values.
std::unique_ptr<DeviceSamples> makeDeviceSamples(const zelmag::AbstractMatrix<double>& matrix,
                                                 LinearAlgebra& libraries);

}  // namespace zelsvm
