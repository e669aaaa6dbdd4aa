// Kernel values on the device.
#pragma once

#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/kernel_rules.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// K of two samples with dot product x and, read for the radial kernel only, squared norms normA and
// normB.
template <SVM_KERNEL K>
__device__ __forceinline__ double kernelValue(double x, double normA, double normB) {
  if constexpr (K == SVM_KERNEL_LINEAR) return x;
  if constexpr (K == SVM_KERNEL_RADIAL) return exp(radialExponent(zelsvm_gamma, normA, normB, x));
  const double inner = fusedMultiplyAdd(zelsvm_gamma, x, zelsvm_coef0);
  if constexpr (K == SVM_KERNEL_SIGMOID) return tanh(inner);
  return binaryPower(inner, effectiveDegree(zelsvm_degree), 1.0);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
