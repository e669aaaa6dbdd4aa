#include "zeldplus/zelsvm/engine/cuda/block_reduction.cuh"
#include "zeldplus/zelsvm/engine/cuda/kernel_value.cuh"
#include "zeldplus/zelsvm/model/decision_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned blockThreads = 128;

// The sum over the block's threads; only thread 0 receives it.
template <typename T>
__device__ __forceinline__ T blockSum(T part) {
  __shared__ T sums[blockThreads];
  sums[threadIdx.x] = part;
  reduceBlock<blockThreads>([](unsigned into, unsigned from) { sums[into] += sums[from]; });
  return threadIdx.x == 0 ? sums[0] : 0;
}

}  // namespace

template <typename T, SVM_KERNEL K>
__global__ void __launch_bounds__(blockThreads)
    decisionValueKernel(T* partial, const T* testNorms, const T* coefficients, const T* svNorms,
                        unsigned long long svCount, T* products, unsigned long long ld) {
  constexpr bool needsNorms = K == SVM_KERNEL_RADIAL;
  const T* const column = products + blockIdx.y * ld;
  const T testNorm = needsNorms ? testNorms[blockIdx.y] : 0;
  const unsigned stride = gridDim.x * blockThreads;
  T sum = 0;
  for (unsigned long long k = blockIdx.x * blockThreads + threadIdx.x; k < svCount; k += stride) {
    const T value = kernelValue<K>(column[k], testNorm, needsNorms ? __ldg(svNorms + k) : 0);
    sum = fusedMultiplyAdd(value, __ldg(coefficients + k), sum);
  }
  sum = blockSum(sum);
  if (threadIdx.x == 0) partial[blockIdx.y * gridDim.x + blockIdx.x] = sum;
}

template <typename T>
__global__ void __launch_bounds__(blockThreads)
    decisionReductionKernel(T* out, const T* partial, T rho, unsigned long long count) {
  T sum = 0;
  for (unsigned long long t = threadIdx.x; t < count; t += blockThreads)
    sum += partial[blockIdx.x * count + t];
  sum = blockSum(sum);
  if (threadIdx.x == 0) out[blockIdx.x] = sum - rho;
}

template __global__ void decisionValueKernel<double, SVM_KERNEL_LINEAR>(double*, const double*,
                                                                        const double*,
                                                                        const double*,
                                                                        unsigned long long, double*,
                                                                        unsigned long long);
template __global__ void decisionValueKernel<double, SVM_KERNEL_POLYNOMIAL>(
    double*, const double*, const double*, const double*, unsigned long long, double*,
    unsigned long long);
template __global__ void decisionValueKernel<double, SVM_KERNEL_RADIAL>(double*, const double*,
                                                                        const double*,
                                                                        const double*,
                                                                        unsigned long long, double*,
                                                                        unsigned long long);
template __global__ void decisionValueKernel<double, SVM_KERNEL_SIGMOID>(
    double*, const double*, const double*, const double*, unsigned long long, double*,
    unsigned long long);
template __global__ void decisionReductionKernel(double*, const double*, double,
                                                 unsigned long long);

}  // namespace zelsvm::inline ZEL_PLATFORM
