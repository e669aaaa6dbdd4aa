// Device kernels that turn dot products into kernel values in place.
#pragma once

#include <cuda_runtime.h>

#include "rules/kernel_type.h"

namespace zelsvm {

// Blocks of 128 threads, no dynamic shared memory. v[i], a squared norm, becomes K(x_i, x_i).
template <typename T, SVM_KERNEL K>
__global__ void findSmoNormKernel(T* v, unsigned long long n);

// Blocks of 128 threads over the rows. m is column-major, nrows x ncols with leading dimension ld;
// column c belongs to sample first + c.
template <typename T, SVM_KERNEL K>
__global__ void findSmoMatrixKernel(T* m, unsigned long long ld, unsigned long long first,
                                    unsigned long long ncols, unsigned long long nrows);

using NormKernel = void (*)(double*, unsigned long long);
using MatrixKernel = void (*)(double*, unsigned long long, unsigned long long, unsigned long long,
                              unsigned long long);

// Null where squared norms stay as they are: they are the diagonal, or the kernel function reads
// them.
NormKernel normKernelOf(SVM_KERNEL type);
// Null where dot products are the kernel values.
MatrixKernel matrixKernelOf(SVM_KERNEL type);

}  // namespace zelsvm
