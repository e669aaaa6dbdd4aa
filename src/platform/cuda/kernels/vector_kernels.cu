#include "platform/cuda/kernels/vector_kernels.h"

namespace zel {
namespace {

// Grid-stride loop: position and stride start in 32 bits, steps are counted in n's type. The
// barrier keeps a block's warps together on its stretch of the arrays.
template <typename Count, typename Operation>
__device__ __forceinline__ void forEachElement(Count n, const Operation& operation) {
  const unsigned stride = blockDim.x * gridDim.x;
  Count i = blockIdx.x * blockDim.x + threadIdx.x;
  for (bool more = i < n; more; i += stride) {
    operation(i);
    __syncthreads();
    more = n - i > stride;
  }
}

}  // namespace

template <typename T, DEVICE_VEC_SCALAR_OP op>
__global__ void vecScalarKernel(T* x, T s, unsigned long long n) {
  forEachElement(n, [=](unsigned long long i) { x[i] = scalarOperation<op>(x[i], s); });
}

template <typename T, DEVICE_VEC_BINARY_OP op>
__global__ void vecBinaryKernel(T* x, const T* y, unsigned long long n) {
  forEachElement(n, [=](unsigned long long i) { x[i] = binaryOperation<op>(x[i], __ldg(y + i)); });
}

template <typename T, typename U>
__global__ void vecNumerizeKernel(T* out, const U* in, unsigned n) {
  forEachElement(n, [=](unsigned i) { out[i] = static_cast<T>(__ldg(in + i)); });
}

template <typename T>
__global__ void vecAxpbyKernel(T* y, T a, T* x, T b, unsigned long long n) {
  forEachElement(n, [=](unsigned long long i) { y[i] = scaledSum(a, __ldg(x + i), b, y[i]); });
}

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

}  // namespace zel
