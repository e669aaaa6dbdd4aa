// Device kernels that turn dot products into decision values.
#pragma once

#include <cuda_runtime.h>

#include "rules/kernel_type.h"

namespace zelsvm {

// Grid (parts, test samples), blocks of 128 threads. products holds one column of svCount dot
// products, leading dimension ld, per test sample and stays as it is. partial[y * parts + x]
// receives part x of sample y's sum of coefficient times kernel value.
template <typename T, SVM_KERNEL K>
__global__ void decisionValueKernel(T* partial, const T* testNorms, const T* coefficients,
                                    const T* svNorms, unsigned long long svCount, T* products,
                                    unsigned long long ld);

using DecisionValueKernel = void (*)(double*, const double*, const double*, const double*,
                                     unsigned long long, double*, unsigned long long);

DecisionValueKernel decisionValueKernelOf(SVM_KERNEL type);

// One block of 128 threads per test sample: out[b] is the sum of its count partial sums less rho.
template <typename T>
__global__ void decisionReductionKernel(T* out, const T* partial, T rho, unsigned long long count);

}  // namespace zelsvm
