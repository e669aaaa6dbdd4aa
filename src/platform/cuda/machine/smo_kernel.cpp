#include "platform/cuda/machine/smo_kernel.h"

#include <algorithm>

#include "base/errors.h"
#include "platform/cuda/runtime/launch.h"

namespace zelsvm {
namespace {

constexpr unsigned blockSize = 128;

}  // namespace

template <typename T>
SmoKernel<T>::SmoKernel(SVM_KERNEL type, LinearAlgebra& libraries)
    : libraries(&libraries), normKernel(normKernelOf(type)), matrixKernel(matrixKernelOf(type)) {
  if (normKernel != nullptr) normLimit = zel::gridLimit(normKernel, blockSize);
  if (matrixKernel != nullptr) matrixLimit = zel::gridLimit(matrixKernel, blockSize);
}

template <typename T>
void SmoKernel<T>::initialize(const zelmag::AbstractMatrix<T>& data, std::uint64_t newVariableCount,
                              std::uint64_t cacheSize, unsigned cacheSharers) {
  releaseData();
  variableCount = newVariableCount;
  sampleCount = data.rows();
  requests = 0;
  misses = 0;
  norms.assign({data.rowNorms().data(), sampleCount});
  texture.emplace(norms);
  samples = makeDeviceSamples(data, *libraries);
  cache.initialize(sampleCount, cacheSize, cacheSharers);
}

template <typename T>
void SmoKernel<T>::makeDiagonal() {
  if (normKernel == nullptr) return;
  zel::launch(normKernel, {zel::gridSize(normLimit, sampleCount, blockSize), blockSize},
              norms.data(), sampleCount);
}

template <typename T>
void SmoKernel<T>::releaseData() {
  samples.reset();
  texture.reset();
}

template <typename T>
double SmoKernel<T>::hitRate() const {
  return requests == 0 ? 0 : static_cast<double>(requests - misses) / static_cast<double>(requests);
}

template <typename T>
std::uint64_t SmoKernel<T>::sampleOf(std::uint64_t index) const {
  const std::uint64_t sample = index < sampleCount ? index : index - sampleCount;
  if (index >= variableCount || sample >= sampleCount)
    throw zel::RuntimeException("Unexpected kernel matrix indexes.");
  return sample;
}

template <typename T>
const T* SmoKernel<T>::getRow(std::uint64_t index) {
  const std::uint64_t sample = sampleOf(index);
  ++requests;
  if (T* const cached = cache.query(sample)) return cached;
  ++misses;
  T* const row = cache.grab(sample);
  samples->rowProducts(row, sample);
  transform(row, sample, 1);
  return row;
}

template <typename T>
const T* SmoKernel<T>::computeBlock(std::uint64_t first, std::uint64_t count) {
  T* const columns = cache.clear();
  const std::uint64_t most = samples->rowsAtOnce();
  std::uint64_t part = 0;
  for (std::uint64_t done = 0; done < count; done += part) {
    part = std::min(most, count - done);
    samples->blockProducts(samples->rows(first + done, part), samples->cols(),
                           columns + done * pitch(), pitch(), part);
  }
  transform(columns, first, count);
  return columns;
}

template <typename T>
void SmoKernel<T>::transform(T* values, std::uint64_t first, std::uint64_t count) {
  if (matrixKernel == nullptr) return;
  zel::launch(matrixKernel, {zel::gridSize(matrixLimit, sampleCount, blockSize), blockSize}, values,
              pitch(), first, count, sampleCount);
}

template class SmoKernel<double>;

}  // namespace zelsvm
