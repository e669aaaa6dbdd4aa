// The samples of a data set: one row per sample, one column per feature in use.
#pragma once

#include <cstdint>
#include <memory>

#include "base/interval.h"
#include "base/vectors.h"
#include "data/feature_numbers.h"

namespace zelmag {

class KernelValues;

// Immutable after construction.
template <typename T>
class AbstractMatrix {
 public:
  AbstractMatrix(const AbstractMatrix&) = delete;
  AbstractMatrix& operator=(const AbstractMatrix&) = delete;
  virtual ~AbstractMatrix() = default;

  [[nodiscard]] std::uint64_t cols() const { return featureNumbers.columns(); }
  // Which features the columns are.
  [[nodiscard]] const FeatureNumbers& features() const { return featureNumbers; }
  [[nodiscard]] std::uint64_t rows() const { return rowCount; }
  // For a subset, each row's number in the full data set; empty for a matrix made from data.
  [[nodiscard]] const zel::IndexList<>& rowIds() const { return ids; }
  [[nodiscard]] std::uint64_t rowNumber(std::uint64_t row) const {
    return ids.size() == 0 ? row : ids[row];
  }
  // Sum of squares of each row's stored values.
  [[nodiscard]] const zelsvm::HostVector<T>& rowNorms() const { return norms; }

  // Of samples that are known by their kernel values only: these values. Else null.
  [[nodiscard]] virtual const KernelValues* kernelValues() const { return nullptr; }

  // The stored values, row after row; null for a matrix whose rows are to be copied.
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
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const = 0;
  // A matrix of the same kind whose row k is row selection[k] of this one.
  [[nodiscard]] virtual std::unique_ptr<AbstractMatrix> subset(
      const zel::IndexList<>& selection) const = 0;
  // A matrix of the same kind whose columns are those that the move gives, 0 where no column came
  // from.
  [[nodiscard]] virtual std::unique_ptr<AbstractMatrix> moved(const ColumnMove& move) const = 0;
  // Writes cols values of one row; clear zeroes the target first where the row does not store every
  // value.
  virtual void copyRow(T* target, std::uint64_t row, bool clear) const = 0;
  // Minimum and maximum of each column over all rows, absent entries counting as 0; (0, 0) for
  // entries of the vector beyond cols.
  virtual void collectBounds(zelsvm::HostVector<zel::Interval>& bounds) const = 0;
  // How many values exportScaled writes.
  [[nodiscard]] virtual std::uint64_t scaledValueCount(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const = 0;
  // Dense: all values, row-major, the index arrays ignored. Sparse: CSR without zeros.
  virtual void exportScaled(T* values, int* columnIndices, int* rowOffsets,
                            const zel::Interval& range,
                            const zelsvm::HostVector<zel::Interval>& bounds) const = 0;

 protected:
  // Throws AppException when either count is 0.
  AbstractMatrix(FeatureNumbers features, std::uint64_t rows);
  // Takes over the row ids and norms of the selected rows of source.
  void inheritRows(const AbstractMatrix& source, const zel::IndexList<>& selection);
  // Of a subset whose full data set is nowhere.
  void setRowIds(const zel::IndexList<>& numbers);

  zelsvm::HostVector<T> norms;

 private:
  FeatureNumbers featureNumbers;
  std::uint64_t rowCount;
  zel::IndexList<> ids;
};

// The matrix with its columns where these features have them, columns of its own behind theirs;
// null where every feature has its column in both, so that there is nothing to move.
template <typename T>
std::unique_ptr<AbstractMatrix<T>> movedTo(const FeatureNumbers& features,
                                           const AbstractMatrix<T>& matrix, Unlisted unlisted);

// A matrix over the given arrays, which it wraps: sparse where there are row offsets, else dense.
// cols counts features: of a sparse matrix with few of them in use only these have columns,
// numbered anew.
template <typename T>
std::unique_ptr<AbstractMatrix<T>> createMatrix(T* values, int* columnIndices, int* rowOffsets,
                                                std::uint64_t cols, std::uint64_t rows);

}  // namespace zelmag
