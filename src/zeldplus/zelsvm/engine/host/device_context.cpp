#include "zeldplus/zelsvm/engine/device_context.h"

namespace zelsvm::inline ZEL_PLATFORM {

unsigned long long zelsvm_N = 0;
double zelsvm_gamma = 0;
double zelsvm_degree = 0;
double zelsvm_coef0 = 0;
double zelsvm_Cp = 0;
double zelsvm_Cn = 0;
cudaTextureObject_t zelsvm_tx_ys = 0;
cudaTextureObject_t zelsvm_tx_alpha = 0;
cudaTextureObject_t zelsvm_tx_f = 0;
cudaTextureObject_t zelsvm_tx_norm = 0;
cudaTextureObject_t zelsvm_tx_sigx[2] = {};
unsigned zelsvm_cnv_sem = 0;
unsigned zelsvm_wss_sem = 0;
unsigned zelsvm_reduction_sem = 0;
unsigned zelsvm_sigmoid_sem = 0;

}  // namespace zelsvm::inline ZEL_PLATFORM
