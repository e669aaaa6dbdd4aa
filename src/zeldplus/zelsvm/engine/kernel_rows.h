// Computes rows of the kernel matrix, several at once where that is cheaper.
#pragma once

#include <cstdint>
#include <memory>

#include "zeldplus/zelsvm/data/matrix.h"
#include "zeldplus/zelsvm/engine/row_forecast.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// A sample and the device memory for its row: roundedCapacity(samples) elements, of which the first
// `samples` are the row.
template <typename T>
struct RowTarget {
  std::uint64_t sample;
  T* values;
};

template <typename T>
class KernelRows {
 public:
  KernelRows() = default;
  KernelRows(const KernelRows&) = delete;
  KernelRows& operator=(const KernelRows&) = delete;
  virtual ~KernelRows() = default;

  // The samples of the solve to come, whose device context is published. The matrix and its squared
  // norms, on the device, must outlive the solve. Throws RuntimeException when memory runs out.
  virtual void assign(zelmag::AbstractMatrix<T>& samples, SVM_KERNEL kernelType,
                      const T* norms) = 0;
  // Rows beyond the first are cheaper up to so many; 1 where they are not.
  [[nodiscard]] virtual unsigned mostTogether() const = 0;
  // For forecasts; null where rows are not worth computing together.
  virtual PairKernel* pairs() = 0;
  // Equal bits for a row whichever rows are computed with it.
  virtual void compute(const RowTarget<T>* rows, unsigned count) = 0;
};

template <typename T>
std::unique_ptr<KernelRows<T>> makeKernelRows();

}  // namespace zelsvm::inline ZEL_PLATFORM
