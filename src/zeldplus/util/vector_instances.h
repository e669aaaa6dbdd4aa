// The vector kernels' instances, the same on every platform; included where the kernels are
// defined.
#pragma once

#include "zeldplus/inc/zelveckernels.h"

namespace zel::inline ZEL_PLATFORM {

// NOLINTBEGIN(bugprone-macro-parentheses): template arguments take none.
#define ZEL_SCALAR_INSTANCE(T, op) \
  template __global__ void vecScalarKernel<T, op>(T*, T, unsigned long long);
#define ZEL_BINARY_INSTANCE(T, op) \
  template __global__ void vecBinaryKernel<T, op>(T*, const T*, unsigned long long);
#define ZEL_NUMERIZE_INSTANCE(T, U) \
  template __global__ void vecNumerizeKernel<T, U>(T*, const U*, unsigned);
#define ZEL_VECTOR_INSTANCES(T, Other)               \
  ZEL_SCALAR_INSTANCE(T, DEVICE_VEC_FILL)            \
  ZEL_SCALAR_INSTANCE(T, DEVICE_VEC_ADD_SCALAR)      \
  ZEL_SCALAR_INSTANCE(T, DEVICE_VEC_MULTIPLY_SCALAR) \
  ZEL_SCALAR_INSTANCE(T, DEVICE_VEC_SQRT)            \
  ZEL_SCALAR_INSTANCE(T, DEVICE_VEC_EXP)             \
  ZEL_SCALAR_INSTANCE(T, DEVICE_VEC_LOGISTIC)        \
  ZEL_BINARY_INSTANCE(T, DEVICE_VEC_ADD)             \
  ZEL_BINARY_INSTANCE(T, DEVICE_VEC_MULTIPLY)        \
  ZEL_NUMERIZE_INSTANCE(T, Other)                    \
  ZEL_NUMERIZE_INSTANCE(T, unsigned char)            \
  ZEL_NUMERIZE_INSTANCE(T, unsigned int)             \
  template __global__ void vecAxpbyKernel<T>(T*, T, T*, T, unsigned long long);
// NOLINTEND(bugprone-macro-parentheses)

ZEL_VECTOR_INSTANCES(double, float)
ZEL_VECTOR_INSTANCES(float, double)

}  // namespace zel::inline ZEL_PLATFORM
