// Rows of the kernel matrix on demand, through the row cache.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "zeldplus/inc/zeltexture_v2.h"
#include "zeldplus/zelsvm/data/matrix.h"
#include "zeldplus/zelsvm/engine/batch_policy.h"
#include "zeldplus/zelsvm/engine/kernel_rows.h"
#include "zeldplus/zelsvm/engine/mru_cache.h"
#include "zeldplus/zelsvm/engine/row_forecast.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Variables 0 … samples - 1 stand for the samples; where there are twice as many variables (the
// regressions), variable k of the second half stands for sample k - samples. Reads the device
// context of the solve in progress.
template <typename T>
class SmoKernel {
 public:
  SmoKernel();
  virtual ~SmoKernel() = default;

  // Makes the cache empty and large enough, and the kernel's diagonal (for the radial kernel the
  // squared norms) known to the device kernels. The matrix must outlive the solve.
  void initialize(zelmag::AbstractMatrix<T>& data, SVM_KERNEL kernelType,
                  std::uint64_t variableCount, std::uint64_t cacheSize);
  // Where a row has to be computed, rows that the forecast names may be computed with it. It must
  // outlive the kernel; null for none.
  void setForecast(RowForecast* newForecast) { forecast = newForecast; }
  // The variable's row, one device value per sample; valid until its slot is reused, which the next
  // three calls do not do. Throws RuntimeException for a variable out of range.
  const T* getRow(std::uint64_t index);
  // `count` columns from sample `first` on, column k at k * pitch; count is at most the number of
  // slots. All cached rows are lost.
  const T* computeBlock(std::uint64_t first, std::uint64_t count);
  // Drops the texture over the diagonal.
  void releaseTexture() { normTexture.reset(); }

  [[nodiscard]] std::uint64_t slotCount() const { return cache.slotCount(); }
  [[nodiscard]] std::uint64_t pitch() const { return cache.slotPitch(); }
  // K(x, x) by sample on the device, or squared norms for the radial kernel.
  [[nodiscard]] const T* diagonal() const { return norms.data(); }
  // Since initialize: rows computed, guesses included, and guesses that were asked for later.
  [[nodiscard]] std::uint64_t computedRows() const { return rowCount; }
  [[nodiscard]] std::uint64_t usedGuesses() const { return cache.usedGuesses(); }
  // The part of the rows asked for since initialize that the cache held; 0 before the first.
  [[nodiscard]] double hitRate() const;

 private:
  [[nodiscard]] std::uint64_t sampleOf(std::uint64_t index) const;
  const T* computeRow(std::uint64_t sample);
  void transform(T* values, std::uint64_t first, std::uint64_t count);

  zelmag::AbstractMatrix<T>* data = nullptr;
  std::uint64_t sampleCount = 0;
  std::uint64_t variableCount = 0;
  SVM_KERNEL kernelType = SVM_KERNEL_UNSUPPORTED;
  MRUCache<T> cache;
  std::unique_ptr<KernelRows<T>> rows = makeKernelRows<T>();
  RowForecast* forecast = nullptr;
  BatchPolicy policy;
  std::vector<std::uint64_t> guesses;
  std::vector<RowTarget<T>> targets;
  std::uint64_t rowCount = 0;
  std::uint64_t requests = 0;
  std::uint64_t misses = 0;
  zel::DeviceVector<T> norms;
  std::unique_ptr<zel::LinearTexture<T>> normTexture;
  unsigned polynomialNormLimit;
  unsigned sigmoidNormLimit;
  unsigned polynomialLimit;
  unsigned radialLimit;
  unsigned sigmoidLimit;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
