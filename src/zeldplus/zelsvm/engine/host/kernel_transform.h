// Dot products of one sample with many, turned into kernel values as the device context says.
#pragma once

#include <cstdint>

#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/host/transform_sweeps.h"
#include "zeldplus/zelsvm/engine/kernel_rules.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Costs of one value on one thread.
template <SVM_KERNEL K>
inline constexpr double transformNanoseconds = K == SVM_KERNEL_LINEAR ? 0.1 : 1.5;

// products[r], r < n, becomes K of the sample with squared norm `norm` and the r-th of those with
// squared norms `norms`; the norms are read for the radial kernel only.
template <SVM_KERNEL K>
void transformProducts(double* products, const double* norms, std::uint64_t n, double norm) {
  const TransformSweeps& sweeps = transformSweeps();
  if constexpr (K == SVM_KERNEL_POLYNOMIAL)
    sweeps.polynomial(products, n, zelsvm_gamma, zelsvm_coef0, effectiveDegree(zelsvm_degree));
  if constexpr (K == SVM_KERNEL_RADIAL) sweeps.radial(products, norms, n, zelsvm_gamma, norm);
  if constexpr (K == SVM_KERNEL_SIGMOID) sweeps.sigmoid(products, n, zelsvm_gamma, zelsvm_coef0);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
