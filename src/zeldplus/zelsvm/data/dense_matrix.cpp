#include "zeldplus/zelsvm/data/dense_matrix.h"

#include <cstring>
#include <utility>

#include "zeldplus/zelsvm/data/bounds.h"

namespace zelmag::inline ZEL_PLATFORM {

using zel::DeviceVector;
using zelsvm::HostVector;

template <typename T>
DenseMatrix<T>::DenseMatrix(HostVector<T>&& values, std::uint64_t cols, std::uint64_t rows,
                            zellas::BlasContext& context)
    : AbstractMatrix<T>(cols, rows), elements(std::move(values)), context(&context) {
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < rows; ++i) {
    T sum = 0;
    for (std::uint64_t j = 0; j < cols; ++j, ++v) sum += *v * *v;
    this->norms.set(i, sum);
  }
}

template <typename T>
DenseMatrix<T>::DenseMatrix(const DenseMatrix& source, const zel::IndexList<>& selection)
    : AbstractMatrix<T>(source.cols(), selection.size()),
      elements(source.cols() * selection.size()),
      context(source.context) {
  for (std::uint64_t k = 0; k < selection.size(); ++k)
    source.copyRow(elements.at(k * source.cols()), selection[k], false);
  this->inheritRows(source, selection);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> DenseMatrix<T>::scaledCopy(
    const double2& range, const HostVector<double2>& bounds) const {
  HostVector<T> scaled(scaledValueCount(range, bounds));
  exportScaled(scaled.data(), nullptr, nullptr, range, bounds);
  return std::make_unique<DenseMatrix>(std::move(scaled), this->cols(), this->rows(), *context);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> DenseMatrix<T>::subset(const zel::IndexList<>& selection) const {
  return std::unique_ptr<AbstractMatrix<T>>(new DenseMatrix(*this, selection));
}

template <typename T>
void DenseMatrix<T>::copyRow(T* target, std::uint64_t row, bool /*clear*/) const {
  std::memcpy(target, elements.at(row * this->cols()), this->cols() * sizeof(T));
}

template <typename T>
void DenseMatrix<T>::collectBounds(HostVector<double2>& bounds) const {
  Multibound<T> found(this->cols());
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    for (std::uint64_t j = 0; j < this->cols(); ++j) found.add(j, *v++);
  found.store(bounds);
}

template <typename T>
std::uint64_t DenseMatrix<T>::scaledValueCount(const double2& /*range*/,
                                               const HostVector<double2>& /*bounds*/) const {
  return this->rows() * this->cols();
}

template <typename T>
void DenseMatrix<T>::exportScaled(T* values, int* /*columnIndices*/, int* /*rowOffsets*/,
                                  const double2& range, const HostVector<double2>& bounds) const {
  const T* v = elements.data();
  for (std::uint64_t i = 0; i < this->rows(); ++i)
    for (std::uint64_t j = 0; j < this->cols(); ++j)
      *values++ = Multiscale<T>::scale(*v++, range, bounds, j);
}

template <typename T>
void DenseMatrix<T>::upload() {
  if (deviceMatrix) return;
  deviceValues = std::make_unique<DeviceVector<T>>(elements);
  deviceMatrix = std::make_unique<zellas::DenseMatrix<T>>(*context, deviceValues->data(),
                                                          this->cols(), this->rows(), this->cols());
}

template <typename T>
void DenseMatrix<T>::rowProducts(DeviceVector<T>& result, std::uint64_t row) {
  upload();
  deviceMatrix->gemv(CUBLAS_OP_T, 1, deviceMatrix->sample(row), 0, result.data());
}

template <typename T>
void DenseMatrix<T>::blockProducts(DeviceVector<T>& block, std::uint64_t blockStride,
                                   DeviceVector<T>& result, std::uint64_t resultStride,
                                   std::uint64_t count) {
  upload();
  deviceMatrix->gemm(CUBLAS_OP_T, CUBLAS_OP_N, count, 1, block.data(), blockStride, 0,
                     result.data(), resultStride);
}

template <typename T>
DeviceVector<T>& DenseMatrix<T>::deviceRows(std::uint64_t first, std::uint64_t count) {
  upload();
  deviceBlock = std::make_unique<DeviceVector<T>>(this->cols() * count,
                                                  deviceValues->data() + first * this->cols());
  return *deviceBlock;
}

template <typename T>
void DenseMatrix<T>::releaseDevice() {
  deviceBlock.reset();
  deviceMatrix.reset();
  deviceValues.reset();
}

template class DenseMatrix<double>;

}  // namespace zelmag::inline ZEL_PLATFORM
