#include "platform/cuda/kernels/device_context.h"

namespace zelsvm {

__constant__ unsigned long long zelsvm_N;
__constant__ double zelsvm_gamma;
__constant__ double zelsvm_degree;
__constant__ double zelsvm_coef0;
__constant__ double zelsvm_Cp;
__constant__ double zelsvm_Cn;
__constant__ const double* zelsvm_factors;
__constant__ cudaTextureObject_t zelsvm_tx_ys;
__constant__ cudaTextureObject_t zelsvm_tx_alpha;
__constant__ cudaTextureObject_t zelsvm_tx_f;
__constant__ cudaTextureObject_t zelsvm_tx_norm;
__constant__ cudaTextureObject_t zelsvm_tx_sigx[2];
__constant__ const double* zelsvm_sigw;
__device__ unsigned zelsvm_cnv_sem;
__device__ unsigned zelsvm_wss_sem;
__device__ unsigned zelsvm_reduction_sem;
__device__ unsigned zelsvm_sigmoid_sem;

}  // namespace zelsvm
