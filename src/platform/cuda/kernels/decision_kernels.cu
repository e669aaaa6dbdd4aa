#include "platform/cuda/kernels/block_reduction.cuh"
#include "platform/cuda/kernels/decision_kernels.h"
#include "platform/cuda/kernels/kernel_value.cuh"

namespace zelsvm {
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
  constexpr bool readsNorms = KernelFunction<K>::readsNorms;
  const T* const column = products + blockIdx.y * ld;
  const T testNorm = readsNorms ? testNorms[blockIdx.y] : 0;
  const unsigned stride = gridDim.x * blockThreads;
  T sum = 0;
  for (unsigned long long k = blockIdx.x * blockThreads + threadIdx.x; k < svCount; k += stride) {
    const T value = deviceKernelValue<K>(column[k], testNorm, readsNorms ? __ldg(svNorms + k) : 0);
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

template __global__ void decisionReductionKernel(double*, const double*, double,
                                                 unsigned long long);

namespace {

struct ChooseDecisionValueKernel {
  template <typename Function>
  DecisionValueKernel operator()() const {
    return decisionValueKernel<double, typeOf(Function{})>;
  }
};

}  // namespace

DecisionValueKernel decisionValueKernelOf(SVM_KERNEL type) {
  return withKernel(type, ChooseDecisionValueKernel{});
}

}  // namespace zelsvm
