// Device kernels that turn dot products into kernel values in place.
#pragma once

#include <cuda_runtime.h>

#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Blocks of 128 threads, no dynamic shared memory. K is polynomial or sigmoid: v[i], a squared
// norm, becomes K(x_i, x_i).
template <typename T, SVM_KERNEL K>
__global__ void findSmoNormKernel(T* v, unsigned long long n);

// Blocks of 128 threads over the rows. m is column-major, nrows x ncols with leading dimension ld;
// column c belongs to sample first + c. K is any kernel but the linear one.
template <typename T, SVM_KERNEL K>
__global__ void findSmoMatrixKernel(T* m, unsigned long long ld, unsigned long long first,
                                    unsigned long long ncols, unsigned long long nrows);

}  // namespace zelsvm::inline ZEL_PLATFORM
