#include "platform/cuda/machine/kernel_symbols.h"

#include "platform/cuda/kernels/device_context.h"
#include "platform/cuda/runtime/symbols.h"

namespace zelsvm {

void publishKernel(const KernelSettings& kernel) {
  zel::publishSymbol(zelsvm_gamma, kernel.type == SVM_KERNEL_RADIAL ? -kernel.gamma : kernel.gamma);
  zel::publishSymbol(zelsvm_coef0, kernel.coef0);
  zel::publishSymbol(zelsvm_degree, kernel.degree);
}

}  // namespace zelsvm
