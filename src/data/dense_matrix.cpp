#include "data/dense_matrix.h"

#include <cstring>
#include <utility>

#include "data/bounds.h"

namespace zelmag {

using zelsvm::HostVector;

template <typename T>
DenseMatrix<T>::DenseMatrix(HostVector<T>&& values, FeatureNumbers features, std::uint64_t rows)
    : AbstractMatrix<T>(std::move(features), rows), elements(std::move(values)) {
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < rows; ++i) {
    T sum = 0;
    for (std::uint64_t j = 0; j < this->cols(); ++j, ++v) sum += *v * *v;
    this->norms.set(i, sum);
  }
}

template <typename T>
DenseMatrix<T>::DenseMatrix(const DenseMatrix& source, const zel::IndexList<>& selection)
    : AbstractMatrix<T>(source.features(), selection.size()),
      elements(source.cols() * selection.size()) {
  for (std::uint64_t k = 0; k < selection.size(); ++k)
    source.copyRow(elements.at(k * source.cols()), selection[k], false);
  this->inheritRows(source, selection);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> DenseMatrix<T>::scaledCopy(
    const zel::Interval& range, const HostVector<zel::Interval>& bounds) const {
  HostVector<T> scaled(scaledValueCount(range, bounds));
  exportScaled(scaled.data(), nullptr, nullptr, range, bounds);
  return std::make_unique<DenseMatrix>(std::move(scaled), this->features(), this->rows());
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> DenseMatrix<T>::subset(const zel::IndexList<>& selection) const {
  return std::unique_ptr<AbstractMatrix<T>>(new DenseMatrix(*this, selection));
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> DenseMatrix<T>::moved(const ColumnMove& move) const {
  const std::uint64_t width = move.features.columns();
  HostVector<T> target(this->rows() * width);
  target.fill(0);
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    for (const int column : move.columns) {
      if (column >= 0) *target.at(i * width + static_cast<std::uint64_t>(column)) = *v;
      ++v;
    }
  return std::make_unique<DenseMatrix>(std::move(target), move.features, this->rows());
}

template <typename T>
void DenseMatrix<T>::copyRow(T* target, std::uint64_t row, bool /*clear*/) const {
  std::memcpy(target, elements.at(row * this->cols()), this->cols() * sizeof(T));
}

template <typename T>
void DenseMatrix<T>::collectBounds(HostVector<zel::Interval>& bounds) const {
  Multibound<T> found(this->cols());
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    for (std::uint64_t j = 0; j < this->cols(); ++j) found.add(j, *v++);
  found.store(bounds);
}

template <typename T>
std::uint64_t DenseMatrix<T>::scaledValueCount(const zel::Interval& /*range*/,
                                               const HostVector<zel::Interval>& /*bounds*/) const {
  return this->rows() * this->cols();
}

template <typename T>
void DenseMatrix<T>::exportScaled(T* values, int* /*columnIndices*/, int* /*rowOffsets*/,
                                  const zel::Interval& range,
                                  const HostVector<zel::Interval>& bounds) const {
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    for (std::uint64_t j = 0; j < this->cols(); ++j)
      *values++ = Multiscale<T>::scale(*v++, range, bounds, j);
}

template class DenseMatrix<double>;

}  // namespace zelmag
