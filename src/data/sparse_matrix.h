// A matrix of compressed sparse rows with zero-based 32-bit indices.
#pragma once

#include <cstdint>
#include <memory>

#include "data/matrix.h"

namespace zelmag {

// The columns of a row may come in any order; where one repeats, its last entry counts.
template <typename T>
class SparseMatrix : public AbstractMatrix<T> {
 public:
  // Takes over the vectors (which may wrap memory owned elsewhere): one value and column index per
  // stored entry and rows + 1 offsets.
  SparseMatrix(zelsvm::HostVector<T>&& values, zelsvm::HostVector<int>&& columnIndices,
               zelsvm::HostVector<int>&& rowOffsets, FeatureNumbers features, std::uint64_t rows);

  [[nodiscard]] const T* values() const override { return elements.data(); }
  [[nodiscard]] const int* columnIndices() const override { return columns.data(); }
  [[nodiscard]] const int* rowOffsets() const override { return offsets.data(); }
  [[nodiscard]] std::uint64_t valueCount() const override { return elements.size(); }
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> scaledCopy(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> subset(
      const zel::IndexList<>& selection) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> moved(const ColumnMove& move) const override;
  void copyRow(T* target, std::uint64_t row, bool clear) const override;
  void collectBounds(zelsvm::HostVector<zel::Interval>& bounds) const override;
  [[nodiscard]] std::uint64_t scaledValueCount(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const override;
  // Throws RuntimeException when the stored values outgrow 32-bit offsets.
  void exportScaled(T* values, int* columnIndices, int* rowOffsets, const zel::Interval& range,
                    const zelsvm::HostVector<zel::Interval>& bounds) const override;

 private:
  SparseMatrix(const SparseMatrix& source, const zel::IndexList<>& selection);
  [[nodiscard]] std::uint64_t rowBegin(std::uint64_t row) const;
  [[nodiscard]] std::uint64_t rowEnd(std::uint64_t row) const;

  zelsvm::HostVector<T> elements;
  zelsvm::HostVector<int> columns;
  zelsvm::HostVector<int> offsets;
};

}  // namespace zelmag
