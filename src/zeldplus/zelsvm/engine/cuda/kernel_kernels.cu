#include "zeldplus/zelsvm/engine/cuda/device_texture.cuh"
#include "zeldplus/zelsvm/engine/cuda/kernel_value.cuh"
#include "zeldplus/zelsvm/engine/kernel_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T, SVM_KERNEL K>
__global__ void __launch_bounds__(128) findSmoNormKernel(T* v, unsigned long long n) {
  const unsigned stride = gridDim.x * blockDim.x;
  for (unsigned long long r = blockIdx.x * blockDim.x + threadIdx.x; r < n; r += stride)
    v[r] = kernelValue<K>(v[r], 0, 0);
}

template <typename T, SVM_KERNEL K>
__global__ void __launch_bounds__(128)
    findSmoMatrixKernel(T* m, unsigned long long ld, unsigned long long first,
                        unsigned long long ncols, unsigned long long nrows) {
  constexpr bool needsNorms = K == SVM_KERNEL_RADIAL;
  const unsigned stride = gridDim.x * blockDim.x;
  for (unsigned long long r = blockIdx.x * blockDim.x + threadIdx.x; r < nrows; r += stride) {
    const T normR = needsNorms ? fetchDouble(zelsvm_tx_norm, r) : 0;
    for (unsigned long long c = 0; c < ncols; ++c) {
      const T normC = needsNorms ? fetchDouble(zelsvm_tx_norm, first + c) : 0;
      T& value = m[r + c * ld];
      value = kernelValue<K>(value, normC, normR);
    }
  }
}

template __global__ void findSmoNormKernel<double, SVM_KERNEL_POLYNOMIAL>(double*,
                                                                          unsigned long long);
template __global__ void findSmoNormKernel<double, SVM_KERNEL_SIGMOID>(double*, unsigned long long);
template __global__ void findSmoMatrixKernel<double, SVM_KERNEL_POLYNOMIAL>(
    double*, unsigned long long, unsigned long long, unsigned long long, unsigned long long);
template __global__ void findSmoMatrixKernel<double, SVM_KERNEL_RADIAL>(double*, unsigned long long,
                                                                        unsigned long long,
                                                                        unsigned long long,
                                                                        unsigned long long);
template __global__ void findSmoMatrixKernel<double, SVM_KERNEL_SIGMOID>(
    double*, unsigned long long, unsigned long long, unsigned long long, unsigned long long);

}  // namespace zelsvm::inline ZEL_PLATFORM
