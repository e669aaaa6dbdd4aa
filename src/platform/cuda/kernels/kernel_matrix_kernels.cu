#include "platform/cuda/kernels/device_texture.cuh"
#include "platform/cuda/kernels/kernel_matrix_kernels.h"
#include "platform/cuda/kernels/kernel_value.cuh"

namespace zelsvm {

template <typename T, SVM_KERNEL K>
__global__ void __launch_bounds__(128) findSmoNormKernel(T* v, unsigned long long n) {
  const unsigned stride = gridDim.x * blockDim.x;
  for (unsigned long long r = blockIdx.x * blockDim.x + threadIdx.x; r < n; r += stride)
    v[r] = deviceKernelValue<K>(v[r], 0, 0);
}

template <typename T, SVM_KERNEL K>
__global__ void __launch_bounds__(128)
    findSmoMatrixKernel(T* m, unsigned long long ld, unsigned long long first,
                        unsigned long long ncols, unsigned long long nrows) {
  constexpr bool readsNorms = KernelFunction<K>::readsNorms;
  const unsigned stride = gridDim.x * blockDim.x;
  for (unsigned long long r = blockIdx.x * blockDim.x + threadIdx.x; r < nrows; r += stride) {
    const T normR = readsNorms ? fetchDouble(zelsvm_tx_norm, r) : 0;
    for (unsigned long long c = 0; c < ncols; ++c) {
      const T normC = readsNorms ? fetchDouble(zelsvm_tx_norm, first + c) : 0;
      T& value = m[r + c * ld];
      value = deviceKernelValue<K>(value, normC, normR);
    }
  }
}

namespace {

struct ChooseNormKernel {
  template <typename Function>
  NormKernel operator()() const {
    static_assert(Function::unitDiagonal || !Function::readsNorms);
    if constexpr (Function::isProduct || Function::readsNorms)
      return nullptr;
    else
      return findSmoNormKernel<double, typeOf(Function{})>;
  }
};

struct ChooseMatrixKernel {
  template <typename Function>
  MatrixKernel operator()() const {
    if constexpr (Function::isProduct)
      return nullptr;
    else
      return findSmoMatrixKernel<double, typeOf(Function{})>;
  }
};

}  // namespace

NormKernel normKernelOf(SVM_KERNEL type) { return withKernel(type, ChooseNormKernel{}); }

MatrixKernel matrixKernelOf(SVM_KERNEL type) { return withKernel(type, ChooseMatrixKernel{}); }

}  // namespace zelsvm
