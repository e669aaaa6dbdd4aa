// A row-major matrix that stores every value.
#pragma once

#include <cstdint>
#include <memory>

#include "data/matrix.h"

namespace zelmag {

template <typename T>
class DenseMatrix : public AbstractMatrix<T> {
 public:
  // Takes over the vector (which may wrap memory owned elsewhere) of rows x columns values.
  DenseMatrix(zelsvm::HostVector<T>&& values, FeatureNumbers features, std::uint64_t rows);

  [[nodiscard]] const T* values() const override { return elements.data(); }
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
  void exportScaled(T* values, int* columnIndices, int* rowOffsets, const zel::Interval& range,
                    const zelsvm::HostVector<zel::Interval>& bounds) const override;

 private:
  DenseMatrix(const DenseMatrix& source, const zel::IndexList<>& selection);

  zelsvm::HostVector<T> elements;
};

}  // namespace zelmag
