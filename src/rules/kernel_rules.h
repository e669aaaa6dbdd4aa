// Arithmetic that the rules share.
#pragma once

#include "rules/rule.h"

namespace zelsvm {

// a * b + c, rounded once where the processor can.
ZEL_RULE double fusedMultiplyAdd(double a, double b, double c) {
#if defined(__CUDACC__) || defined(__FP_FAST_FMA) || defined(__FMA__)
  return __builtin_fma(a, b, c);
#else
  return a * b + c;
#endif
}

// a where x >= 0, else b.
ZEL_RULE double ifNotNegative(double x, double a, double b) { return x >= 0 ? a : b; }

// The degree as the unsigned number it acts as: truncated, saturated, NaN and negative 0.
ZEL_RULE unsigned effectiveDegree(double degree) {
  if (!(degree > 0)) return 0;
  return degree >= 4294967295.0 ? 4294967295u : static_cast<unsigned>(degree);
}

// t^d by binary exponentiation from the least significant bit; one is the unit of V.
template <typename V>
ZEL_RULE V binaryPower(V t, unsigned d, V one) {
  V result = one;
  do {
    if ((d & 1u) != 0) result = result * t;
    t = t * t;
    d >>= 1;
  } while (d != 0);
  return result;
}

// Exponent of the radial kernel; g is -gamma, x the dot product, the norms are squared.
template <typename V>
ZEL_RULE V radialExponent(V g, V normA, V normB, V x) {
  return g * ((normA + normB) - V(2) * x);
}

}  // namespace zelsvm
