// Dot products of one sample with many, turned into kernel values.
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

struct KernelConstants {
  double gamma;  // negated for the radial kernel
  double coef0;
  unsigned degree;
};

// What the device context says. It is the calling thread's: loops that others may share must be
// given the constants.
inline KernelConstants publishedConstants() {
  return {zelsvm_gamma, zelsvm_coef0, effectiveDegree(zelsvm_degree)};
}

// products[r], r < n, becomes K of the sample with squared norm `norm` and the r-th of those with
// squared norms `norms`; the norms are read for the radial kernel only.
template <SVM_KERNEL K>
void transformProducts(const KernelConstants& constants, double* products, const double* norms,
                       std::uint64_t n, double norm) {
  const TransformSweeps& sweeps = transformSweeps();
  const auto& [gamma, coef0, degree] = constants;
  if constexpr (K == SVM_KERNEL_POLYNOMIAL) sweeps.polynomial(products, n, gamma, coef0, degree);
  if constexpr (K == SVM_KERNEL_RADIAL) sweeps.radial(products, norms, n, gamma, norm);
  if constexpr (K == SVM_KERNEL_SIGMOID) sweeps.sigmoid(products, n, gamma, coef0);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
