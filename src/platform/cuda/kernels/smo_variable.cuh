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

__device__ __forceinline__ double upperBound(bool positive) {
  return positive ? zelsvm_Cp : zelsvm_Cn;
}

__device__ __forceinline__ SmoVariable fetchVariable(unsigned t) {
  const bool positive = isPositive(t);
  return {positive, fetchDouble(zelsvm_tx_alpha, t), upperBound(positive),
          violation(positive, fetchDouble(zelsvm_tx_f, t))};
}

// The sample whose kernel row and diagonal the variable uses.
__device__ __forceinline__ unsigned sampleOf(unsigned t) {
  return t < zelsvm_N ? t : t - static_cast<unsigned>(zelsvm_N);
}

template <bool unitDiagonal>
__device__ __forceinline__ double diagonalOf(unsigned t) {
  return unitDiagonal ? 1.0 : fetchDouble(zelsvm_tx_norm, sampleOf(t));
}

}  // namespace zelsvm
