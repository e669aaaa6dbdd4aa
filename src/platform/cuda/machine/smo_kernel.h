// Rows of the kernel matrix on demand, through the row cache.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/cuda/kernels/kernel_matrix_kernels.h"
#include "platform/cuda/machine/device_samples.h"
#include "platform/cuda/machine/row_cache.h"
#include "platform/cuda/runtime/texture.h"
#include "rules/kernel_type.h"

namespace zelsvm {

// Variables 0 … samples - 1 stand for the samples; where there are twice as many variables (the
// regressions), variable k of the second half stands for sample k - samples. Reads the device
// context of the solve in progress. Throws RuntimeException for device failures.
template <typename T>
class SmoKernel {
 public:
  SmoKernel(SVM_KERNEL type, LinearAlgebra& libraries);
  virtual ~SmoKernel() = default;

  // Makes the cache empty and large enough. The matrix must outlive the solve. The device context
  // is to be published with normTexture() before what follows.
  void initialize(const zelmag::AbstractMatrix<T>& data, std::uint64_t variableCount,
                  std::uint64_t cacheSize, unsigned cacheSharers);
  // Turns the squared norms into the diagonal, for kernel functions that do not read norms.
  void makeDiagonal();
  // The variable's row, one device value per sample; valid until its slot is reused, which the next
  // three calls do not do. Throws RuntimeException for a variable out of range.
  const T* getRow(std::uint64_t index);
  // `count` columns from sample `first` on, column k at k * pitch; count is at most the number of
  // slots. All cached rows are lost.
  const T* computeBlock(std::uint64_t first, std::uint64_t count);
  // Drops the samples and the texture.
  void releaseData();

  [[nodiscard]] std::uint64_t slotCount() const { return cache.slotCount(); }
  [[nodiscard]] std::uint64_t pitch() const { return cache.slotPitch(); }
  // Over K(x, x) by sample, or the squared norms; initialize() has made it.
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access)
  [[nodiscard]] cudaTextureObject_t normTexture() const { return texture->handle(); }
  // The part of the rows asked for since initialize that the cache held; 0 before the first.
  [[nodiscard]] double hitRate() const;

 private:
  [[nodiscard]] std::uint64_t sampleOf(std::uint64_t index) const;
  void transform(T* values, std::uint64_t first, std::uint64_t count);

  LinearAlgebra* libraries;
  NormKernel normKernel;
  MatrixKernel matrixKernel;
  unsigned normLimit = 0;
  unsigned matrixLimit = 0;
  std::unique_ptr<DeviceSamples> samples;
  std::uint64_t sampleCount = 0;
  std::uint64_t variableCount = 0;
  MRUCache<T> cache;
  std::uint64_t requests = 0;
  std::uint64_t misses = 0;
  zel::DeviceVector<T> norms;
  std::optional<zel::LinearTexture<T>> texture;
};

}  // namespace zelsvm
