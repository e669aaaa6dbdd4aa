// A matrix that stores every value, wherever and however it does.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "data/matrix.h"

namespace zelmag {

// What all such matrices do, by way of their rows. Copies are row-major.
template <typename T>
class FullMatrix : public AbstractMatrix<T> {
 public:
  [[nodiscard]] std::uint64_t valueCount() const override { return this->rows() * this->cols(); }
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> scaledCopy(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> subset(
      const zel::IndexList<>& selection) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> moved(const ColumnMove& move) const override;
  void collectBounds(zelsvm::HostVector<zel::Interval>& bounds) const override;
  [[nodiscard]] std::uint64_t scaledValueCount(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const override;
  void exportScaled(T* values, int* columnIndices, int* rowOffsets, const zel::Interval& range,
                    const zelsvm::HostVector<zel::Interval>& bounds) const override;
  void copyRow(T* target, std::uint64_t row, bool /*clear*/) const override {
    copyStretch(target, row, 0, this->cols());
  }
  // Writes the elements of a row in columns begin … end - 1.
  virtual void copyStretch(T* target, std::uint64_t row, std::uint64_t begin,
                           std::uint64_t end) const = 0;

 protected:
  using AbstractMatrix<T>::AbstractMatrix;
  // For constructors, once rows can be read.
  void makeNorms();
};

// use(values, begin, end) for the stretches of a row of a full matrix, in order: values[0] is the
// element in column begin. Nothing is allocated.
template <typename T, typename Use>
void forEachStretch(const FullMatrix<T>& matrix, std::uint64_t row, const Use& use) {
  if (matrix.values() != nullptr)
    return use(matrix.values() + row * matrix.cols(), std::uint64_t{0}, matrix.cols());
  constexpr std::uint64_t most = 256;
  T stretch[most];
  for (std::uint64_t begin = 0; begin < matrix.cols(); begin += most) {
    const std::uint64_t end = std::min(begin + most, matrix.cols());
    matrix.copyStretch(stretch, row, begin, end);
    use(static_cast<const T*>(stretch), begin, end);
  }
}

// Every matrix of features that is not sparse is a full one.
template <typename T>
const FullMatrix<T>& asFull(const AbstractMatrix<T>& matrix) {
  return static_cast<const FullMatrix<T>&>(matrix);
}

}  // namespace zelmag
