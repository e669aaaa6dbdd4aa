#include "zeldplus/zelsvm/engine/device_context.h"

namespace zelsvm::inline ZEL_PLATFORM {

__constant__ unsigned long long zelsvm_N = 0;
__constant__ double zelsvm_gamma = 0;
__constant__ double zelsvm_degree = 0;
__constant__ double zelsvm_coef0 = 0;
__constant__ double zelsvm_Cp = 0;
__constant__ double zelsvm_Cn = 0;
__constant__ cudaTextureObject_t zelsvm_tx_ys = 0;
__constant__ cudaTextureObject_t zelsvm_tx_alpha = 0;
__constant__ cudaTextureObject_t zelsvm_tx_f = 0;
__constant__ cudaTextureObject_t zelsvm_tx_norm = 0;
__constant__ cudaTextureObject_t zelsvm_tx_sigx[2] = {};
ZEL_DEVICE_VARIABLE unsigned zelsvm_cnv_sem = 0;
ZEL_DEVICE_VARIABLE unsigned zelsvm_wss_sem = 0;
ZEL_DEVICE_VARIABLE unsigned zelsvm_reduction_sem = 0;
ZEL_DEVICE_VARIABLE unsigned zelsvm_sigmoid_sem = 0;

}  // namespace zelsvm::inline ZEL_PLATFORM
