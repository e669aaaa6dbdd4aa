#include "data/full_matrix.h"

#include <utility>

#include "data/bounds.h"
#include "data/dense_matrix.h"

namespace zelmag {

using zelsvm::HostVector;

template <typename T>
void FullMatrix<T>::makeNorms() {
  for (std::uint64_t i = 0; i < this->rows(); ++i) {
    T sum = 0;
    forEachStretch(*this, i, [&sum](const T* v, std::uint64_t begin, std::uint64_t end) {
      for (std::uint64_t j = begin; j < end; ++j, ++v) sum += *v * *v;
    });
    this->norms.set(i, sum);
  }
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> FullMatrix<T>::scaledCopy(
    const zel::Interval& range, const HostVector<zel::Interval>& bounds) const {
  HostVector<T> scaled(scaledValueCount(range, bounds));
  exportScaled(scaled.data(), nullptr, nullptr, range, bounds);
  return std::make_unique<DenseMatrix<T>>(std::move(scaled), this->features(), this->rows());
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> FullMatrix<T>::subset(const zel::IndexList<>& selection) const {
  return std::make_unique<DenseMatrix<T>>(*this, selection);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> FullMatrix<T>::moved(const ColumnMove& move) const {
  const std::uint64_t width = move.features.columns();
  HostVector<T> target(this->rows() * width);
  target.fill(0);
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    forEachStretch(*this, i, [&](const T* v, std::uint64_t begin, std::uint64_t end) {
      for (std::uint64_t j = begin; j < end; ++j, ++v)
        if (move.columns[j] >= 0)
          *target.at(i * width + static_cast<std::uint64_t>(move.columns[j])) = *v;
    });
  return std::make_unique<DenseMatrix<T>>(std::move(target), move.features, this->rows());
}

template <typename T>
void FullMatrix<T>::collectBounds(HostVector<zel::Interval>& bounds) const {
  Multibound<T> found(this->cols());
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    forEachStretch(*this, i, [&found](const T* v, std::uint64_t begin, std::uint64_t end) {
      for (std::uint64_t j = begin; j < end; ++j) found.add(j, *v++);
    });
  found.store(bounds);
}

template <typename T>
std::uint64_t FullMatrix<T>::scaledValueCount(const zel::Interval& /*range*/,
                                              const HostVector<zel::Interval>& /*bounds*/) const {
  return valueCount();
}

template <typename T>
void FullMatrix<T>::exportScaled(T* values, int* /*columnIndices*/, int* /*rowOffsets*/,
                                 const zel::Interval& range,
                                 const HostVector<zel::Interval>& bounds) const {
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    forEachStretch(*this, i, [&](const T* v, std::uint64_t begin, std::uint64_t end) {
      for (std::uint64_t j = begin; j < end; ++j)
        *values++ = Multiscale<T>::scale(*v++, range, bounds, j);
    });
}

template class FullMatrix<double>;

}  // namespace zelmag
