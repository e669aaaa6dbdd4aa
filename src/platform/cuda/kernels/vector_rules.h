// Elementwise operations on numbers of one type, double or float: the rules of the vector kernels.
#pragma once

#include <cmath>

#include "rules/rule.h"

namespace zel {

// What becomes of an element v under the scalar s.
enum DEVICE_VEC_SCALAR_OP : unsigned {
  DEVICE_VEC_FILL = 0,             // s
  DEVICE_VEC_ADD_SCALAR = 1,       // v + s
  DEVICE_VEC_MULTIPLY_SCALAR = 2,  // v s
  DEVICE_VEC_SQRT = 3,             // square root of v + s
  DEVICE_VEC_EXP = 4,              // exp(v + s)
  DEVICE_VEC_LOGISTIC = 5,         // 1 / (1 + exp(-(v + s)))
};

// What becomes of an element x beside an element y.
enum DEVICE_VEC_BINARY_OP : unsigned {
  DEVICE_VEC_ADD = 0,       // y + x
  DEVICE_VEC_MULTIPLY = 1,  // y x
};

template <DEVICE_VEC_SCALAR_OP op, typename T>
ZEL_RULE T scalarOperation(T v, T s) {
  static_assert(op <= DEVICE_VEC_LOGISTIC);
  constexpr T half = 0.5;
  if constexpr (op == DEVICE_VEC_FILL) return s;
  if constexpr (op == DEVICE_VEC_ADD_SCALAR) return v + s;
  if constexpr (op == DEVICE_VEC_MULTIPLY_SCALAR) return v * s;
  if constexpr (op == DEVICE_VEC_SQRT) return std::sqrt(v + s);
  if constexpr (op == DEVICE_VEC_EXP) return std::exp(v + s);
  if constexpr (op == DEVICE_VEC_LOGISTIC) return half * (std::tanh(half * (v + s)) + 1);
}

template <DEVICE_VEC_BINARY_OP op, typename T>
ZEL_RULE T binaryOperation(T x, T y) {
  static_assert(op <= DEVICE_VEC_MULTIPLY);
  return op == DEVICE_VEC_ADD ? y + x : y * x;
}

// a x + b y, the sum rounded once.
template <typename T>
ZEL_RULE T scaledSum(T a, T x, T b, T y) {
  return std::fma(x, a, y * b);
}

}  // namespace zel
