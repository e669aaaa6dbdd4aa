// The variables of a solve as the device context shows them.
#pragma once

#include "platform/cuda/kernels/device_context.h"
#include "platform/cuda/kernels/device_texture.cuh"
#include "rules/smo_rules.h"

namespace zelsvm {

// In the notation of the rules.
struct SmoVariable {
  bool positive;
  double a;
  double c;
  double v;
};

__device__ __forceinline__ bool isPositive(unsigned t) { return fetchBytes(zelsvm_tx_ys, t).y > 0; }

// The sample whose kernel row and diagonal the variable uses.
__device__ __forceinline__ unsigned sampleOf(unsigned t) {
  return t < zelsvm_N ? t : t - static_cast<unsigned>(zelsvm_N);
}

__device__ __forceinline__ double upperBound(unsigned t, bool positive) {
  const double c = positive ? zelsvm_Cp : zelsvm_Cn;
  return zelsvm_factors == nullptr ? c : c * __ldg(zelsvm_factors + sampleOf(t));
}

__device__ __forceinline__ SmoVariable fetchVariable(unsigned t) {
  const bool positive = isPositive(t);
  return {positive, fetchDouble(zelsvm_tx_alpha, t), upperBound(t, positive),
          violation(positive, fetchDouble(zelsvm_tx_f, t))};
}

template <bool unitDiagonal>
__device__ __forceinline__ double diagonalOf(unsigned t) {
  return unitDiagonal ? 1.0 : fetchDouble(zelsvm_tx_norm, sampleOf(t));
}

}  // namespace zelsvm
