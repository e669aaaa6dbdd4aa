// Device kernels of the sigmoid fit. Decision values and targets are read through the two textures
// of zelsvm_tx_sigx, weights through zelsvm_sigw.
#pragma once

#include <cuda_runtime.h>

#include "rules/sigmoid_hessian.h"

namespace zelsvm {

// Blocks of 128 threads, out has one entry per block. Entry 0 receives the negative log likelihood
// of n samples under 1 / (1 + exp(A d + B)). zelsvm_reduction_sem counts the blocks and is 0 before
// and after.
template <typename T>
__global__ void findSigmoidFunctionalKernel(T* out, T A, T B, unsigned n);

// The same for the derivatives, with zelsvm_sigmoid_sem.
template <typename T>
__global__ void findSigmoidHessianKernel(SigmoidHessian<T>* out, T A, T B, unsigned n);

}  // namespace zelsvm
