// Kernel values on the device.
#pragma once

#include "platform/cuda/kernels/device_context.h"
#include "rules/kernel_functions.h"

namespace zelsvm {

// K of two samples with dot product x and, where K reads them, squared norms normA and normB.
template <SVM_KERNEL K>
__device__ __forceinline__ double deviceKernelValue(double x, double normA, double normB) {
  const KernelConstants constants{K == SVM_KERNEL_RADIAL ? -zelsvm_gamma : zelsvm_gamma,
                                  zelsvm_coef0, effectiveDegree(zelsvm_degree)};
  return kernelValue<KernelFunction<K>>(constants, x, normA, normB);
}

template <SVM_KERNEL K>
constexpr SVM_KERNEL typeOf(KernelFunction<K> /*function*/) {
  return K;
}

}  // namespace zelsvm
