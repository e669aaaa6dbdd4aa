// Elementwise kernels over device arrays and their launches. The caller chooses the shape; its
// threads number less than 2^32 and either cover the n elements in one pass or divide n, since the
// threads of a block meet after every element. Arrays of one launch do not overlap.
#pragma once

#include <cuda_runtime.h>

#include "platform/cuda/kernels/vector_rules.h"
#include "platform/cuda/runtime/launch.h"

namespace zel {

// T is double or float.
template <typename T, DEVICE_VEC_SCALAR_OP op>
__global__ void vecScalarKernel(T* x, T s, unsigned long long n);

template <typename T, DEVICE_VEC_BINARY_OP op>
__global__ void vecBinaryKernel(T* x, const T* y, unsigned long long n);

// U is the other floating-point type, unsigned char or unsigned int.
template <typename T, typename U>
__global__ void vecNumerizeKernel(T* out, const U* in, unsigned n);

template <typename T>
__global__ void vecAxpbyKernel(T* y, T a, T* x, T b, unsigned long long n);

// x[i] = op(x[i], s). All launches throw RuntimeException when the shape cannot be launched.
template <DEVICE_VEC_SCALAR_OP op, typename T>
void vecScalar(const LaunchShape& shape, T* x, std::type_identity_t<T> s, unsigned long long n) {
  launch(vecScalarKernel<T, op>, shape, x, s, n);
}

// x[i] = op(x[i], y[i]).
template <DEVICE_VEC_BINARY_OP op, typename T>
void vecBinary(const LaunchShape& shape, T* x, const T* y, unsigned long long n) {
  launch(vecBinaryKernel<T, op>, shape, x, y, n);
}

// out[i] = in[i], rounded to nearest.
template <typename T, typename U>
void vecNumerize(const LaunchShape& shape, T* out, const U* in, unsigned n) {
  launch(vecNumerizeKernel<T, U>, shape, out, in, n);
}

// y[i] = a x[i] + b y[i].
template <typename T>
void vecAxpby(const LaunchShape& shape, T* y, std::type_identity_t<T> a, T* x,
              std::type_identity_t<T> b, unsigned long long n) {
  launch(vecAxpbyKernel<T>, shape, y, a, x, b, n);
}

}  // namespace zel
