#include "zeldplus/zelsvm/engine/rskernel.h"

#include <algorithm>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/kernel_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned blockSize = 128;

template <typename... Parameters>
unsigned gridLimit(void (*kernel)(Parameters...)) {
  return static_cast<unsigned>(zel::residentBlocks(kernel, blockSize, 0));
}

}  // namespace

template <typename T>
SmoKernel<T>::SmoKernel()
    : polynomialNormLimit(gridLimit(findSmoNormKernel<T, SVM_KERNEL_POLYNOMIAL>)),
      sigmoidNormLimit(gridLimit(findSmoNormKernel<T, SVM_KERNEL_SIGMOID>)),
      polynomialLimit(gridLimit(findSmoMatrixKernel<T, SVM_KERNEL_POLYNOMIAL>)),
      radialLimit(gridLimit(findSmoMatrixKernel<T, SVM_KERNEL_RADIAL>)),
      sigmoidLimit(gridLimit(findSmoMatrixKernel<T, SVM_KERNEL_SIGMOID>)) {}

template <typename T>
void SmoKernel<T>::initialize(zelmag::AbstractMatrix<T>& newData, SVM_KERNEL newKernelType,
                              std::uint64_t newVariableCount, std::uint64_t cacheSize) {
  data = &newData;
  kernelType = newKernelType;
  variableCount = newVariableCount;
  sampleCount = data->rows();
  cache.initialize(sampleCount, cacheSize);

  if (norms.resize(sampleCount)) normTexture.reset();
  if (!normTexture) normTexture = std::make_unique<zel::LinearTexture<T>>(norms);
  const cudaTextureObject_t handle = normTexture->handle();
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_tx_norm, &handle, sizeof handle));
  norms.copyFrom(data->rowNorms(), 0, 0, sampleCount);
  if (kernelType == SVM_KERNEL_POLYNOMIAL)
    zel::launch(findSmoNormKernel<T, SVM_KERNEL_POLYNOMIAL>,
                {zel::gridSize(polynomialNormLimit, sampleCount, blockSize), blockSize},
                norms.data(), sampleCount);
  if (kernelType == SVM_KERNEL_SIGMOID)
    zel::launch(findSmoNormKernel<T, SVM_KERNEL_SIGMOID>,
                {zel::gridSize(sigmoidNormLimit, sampleCount, blockSize), blockSize}, norms.data(),
                sampleCount);
  rows->assign(*data, kernelType, norms.data());
  // With fewer slots than that guesses might crowd out rows in use.
  policy = BatchPolicy(
      static_cast<unsigned>(std::min<std::uint64_t>(rows->mostTogether(), cache.slotCount() / 4)));
  rowCount = 0;
  requests = 0;
  misses = 0;
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
  return computeRow(sample);
}

template <typename T>
const T* SmoKernel<T>::computeRow(std::uint64_t sample) {
  T* const slot = cache.grab(sample);
  targets.assign(1, {sample, slot});
  const unsigned most = policy.guesses(cache.usedGuesses());
  if (PairKernel* const pairs = rows->pairs();
      forecast != nullptr && pairs != nullptr && most > 0) {
    forecast->likelySamples(guesses, most, cache.cachedRows(), *pairs);
    for (const std::uint64_t guess : guesses) targets.push_back({guess, cache.grabGuess(guess)});
    policy.guessed(guesses.size());
  }
  rows->compute(targets.data(), static_cast<unsigned>(targets.size()));
  rowCount += targets.size();
  return slot;
}

template <typename T>
const T* SmoKernel<T>::computeBlock(std::uint64_t first, std::uint64_t count) {
  cache.clear();
  data->blockProducts(data->deviceRows(first, count), data->cols(), cache.storage(), pitch(),
                      count);
  transform(cache.storage().data(), first, count);
  return cache.storage().data();
}

template <typename T>
void SmoKernel<T>::transform(T* values, std::uint64_t first, std::uint64_t count) {
  const auto run = [&](auto* kernel, unsigned limit) {
    zel::launch(kernel, {zel::gridSize(limit, sampleCount, blockSize), blockSize}, values, pitch(),
                first, count, sampleCount);
  };
  if (kernelType == SVM_KERNEL_POLYNOMIAL)
    run(findSmoMatrixKernel<T, SVM_KERNEL_POLYNOMIAL>, polynomialLimit);
  if (kernelType == SVM_KERNEL_RADIAL) run(findSmoMatrixKernel<T, SVM_KERNEL_RADIAL>, radialLimit);
  if (kernelType == SVM_KERNEL_SIGMOID)
    run(findSmoMatrixKernel<T, SVM_KERNEL_SIGMOID>, sigmoidLimit);
}

template class SmoKernel<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
