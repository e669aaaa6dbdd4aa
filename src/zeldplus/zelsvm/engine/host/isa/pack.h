// Vectors of lanes, as wide as the instruction set that this file is compiled for.
#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA {

#if defined(__AVX512F__)
inline constexpr int lanes = 8;
#elif defined(__AVX__)
inline constexpr int lanes = 4;
#else
inline constexpr int lanes = 2;
#endif

using Pack = double __attribute__((vector_size(8 * lanes)));
using Mask = std::int64_t __attribute__((vector_size(8 * lanes)));
using StatusPack = short __attribute__((vector_size(2 * lanes)));

__attribute__((always_inline)) inline Pack splat(double v) { return Pack{} + v; }

// 0, 1, 2, … by lane.
__attribute__((always_inline)) inline Mask laneNumbers() {
  Mask m{};
  for (int k = 0; k < lanes; ++k) m[k] = k;
  return m;
}

__attribute__((always_inline)) inline Pack load(const double* p) {
  Pack v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}

// Mask of label signs above 0. The sign is the high byte of a status record.
__attribute__((always_inline)) inline Mask loadPositive(const char2* status) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ && sizeof(char2) == 2);
  StatusPack s;
  __builtin_memcpy(&s, status, sizeof s);
  return __builtin_convertvector(s >> 8, Mask) > 0;
}

}  // namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA
