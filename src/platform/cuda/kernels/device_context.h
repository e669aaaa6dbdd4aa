// Device symbols that every kernel of the engine reads. They are written between launches only and
// serve one solve, prediction or fit at a time.
#pragma once

#include <cuda_runtime.h>

namespace zelsvm {

extern __constant__ unsigned long long zelsvm_N;  // training samples
extern __constant__ double zelsvm_gamma;          // effective gamma, negated for the radial kernel
extern __constant__ double zelsvm_degree;
extern __constant__ double zelsvm_coef0;
extern __constant__ double zelsvm_Cp;              // upper bound of variables with positive sign
extern __constant__ double zelsvm_Cn;              // and of the others
extern __constant__ const double* zelsvm_factors;  // by sample, of these bounds; null: all are 1
extern __constant__ cudaTextureObject_t zelsvm_tx_ys;       // char2: 1 if active, label sign
extern __constant__ cudaTextureObject_t zelsvm_tx_alpha;    // multipliers
extern __constant__ cudaTextureObject_t zelsvm_tx_f;        // gradient
extern __constant__ cudaTextureObject_t zelsvm_tx_norm;     // K(x, x), or squared norms for radial
extern __constant__ cudaTextureObject_t zelsvm_tx_sigx[2];  // sigmoid fit: decision values, targets
extern __constant__ const double* zelsvm_sigw;              // and weights; null: all are 1

// Last-block counters: of the first and the second selection, and of the sigmoid fit's objective
// and derivatives.
extern __device__ unsigned zelsvm_cnv_sem;
extern __device__ unsigned zelsvm_wss_sem;
extern __device__ unsigned zelsvm_reduction_sem;
extern __device__ unsigned zelsvm_sigmoid_sem;

}  // namespace zelsvm
