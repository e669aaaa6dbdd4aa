// The samples of a data set: one row per sample, one column per feature, with dot products of rows
// on the device.
#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>

#include "zeldplus/inc/zellas.h"
#include "zeldplus/inc/zelvectors.h"

namespace zelmag::inline ZEL_PLATFORM {

// Host data is immutable after construction. Device copies are made by the first product and live
// until releaseDevice(); only one thread may touch a matrix.
template <typename T>
class AbstractMatrix {
 public:
  AbstractMatrix(const AbstractMatrix&) = delete;
  AbstractMatrix& operator=(const AbstractMatrix&) = delete;
  virtual ~AbstractMatrix() = default;

  [[nodiscard]] std::uint64_t cols() const { return colCount; }
  [[nodiscard]] std::uint64_t rows() const { return rowCount; }
  // For a subset, each row's number in the full data set; empty for a matrix made from data.
  [[nodiscard]] const zel::IndexList<>& rowIds() const { return ids; }
  // Sum of squares of each row's stored values.
  [[nodiscard]] const zelsvm::HostVector<T>& rowNorms() const { return norms; }

  // The stored values on the host, row after row.
  [[nodiscard]] virtual const T* values() const = 0;
  // Are there CSR arrays? Else every value is stored.
  [[nodiscard]] bool isSparse() const { return rowOffsets() != nullptr; }
  // CSR arrays; null for a dense matrix, and without stored values all but the row offsets.
  [[nodiscard]] virtual const int* columnIndices() const { return nullptr; }
  [[nodiscard]] virtual const int* rowOffsets() const { return nullptr; }
  [[nodiscard]] virtual std::uint64_t valueCount() const = 0;

  // A matrix of the same kind with every value scaled from its column's bounds to range; columns
  // beyond the bounds vector stay as they are.
  [[nodiscard]] virtual std::unique_ptr<AbstractMatrix> scaledCopy(
      const double2& range, const zelsvm::HostVector<double2>& bounds) const = 0;
  // A matrix of the same kind whose row k is row selection[k] of this one.
  [[nodiscard]] virtual std::unique_ptr<AbstractMatrix> subset(
      const zel::IndexList<>& selection) const = 0;
  // Writes cols values of one row into host memory; clear zeroes the target first where the row
  // does not store every value.
  virtual void copyRow(T* target, std::uint64_t row, bool clear) const = 0;
  // Minimum and maximum of each column over all rows, absent entries counting as 0; (0, 0) for
  // entries of the vector beyond cols.
  virtual void collectBounds(zelsvm::HostVector<double2>& bounds) const = 0;
  // How many values exportScaled writes.
  [[nodiscard]] virtual std::uint64_t scaledValueCount(
      const double2& range, const zelsvm::HostVector<double2>& bounds) const = 0;
  // Dense: all values, row-major, the index arrays ignored. Sparse: CSR without zeros.
  virtual void exportScaled(T* values, int* columnIndices, int* rowOffsets, const double2& range,
                            const zelsvm::HostVector<double2>& bounds) const = 0;

  // result[i] = dot(row i, the given row) for all rows; result holds at least rows elements.
  virtual void rowProducts(zel::DeviceVector<T>& result, std::uint64_t row) = 0;
  // result[i + k * resultStride] = dot(row i, block row k) for k < count. The block holds dense
  // rows of blockStride elements, at least cols; what lies beyond cols does not take part.
  virtual void blockProducts(zel::DeviceVector<T>& block, std::uint64_t blockStride,
                             zel::DeviceVector<T>& result, std::uint64_t resultStride,
                             std::uint64_t count) = 0;
  // Rows first … first + count - 1 as dense rows of cols elements on the device; the matrix keeps
  // them until the next call or releaseDevice().
  virtual zel::DeviceVector<T>& deviceRows(std::uint64_t first, std::uint64_t count) = 0;
  // Drops everything on the device; the next product makes it anew.
  virtual void releaseDevice() = 0;

 protected:
  // Throws AppException when either count is 0.
  AbstractMatrix(std::uint64_t cols, std::uint64_t rows);
  // Takes over the row ids and norms of the selected rows of source.
  void inheritRows(const AbstractMatrix& source, const zel::IndexList<>& selection);

  zelsvm::HostVector<T> norms;

 private:
  std::uint64_t colCount;
  std::uint64_t rowCount;
  zel::IndexList<> ids;
};

// A matrix over the given host arrays, which it wraps: sparse for a SparseContext, dense for a
// BlasContext (the index arrays are ignored), null for any other context.
template <typename T>
std::unique_ptr<AbstractMatrix<T>> createMatrix(T* values, int* columnIndices, int* rowOffsets,
                                                std::uint64_t cols, std::uint64_t rows,
                                                zellas::LasContext& context);

}  // namespace zelmag::inline ZEL_PLATFORM
