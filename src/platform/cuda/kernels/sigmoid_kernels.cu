#include "platform/cuda/kernels/block_reduction.cuh"
#include "platform/cuda/kernels/device_context.h"
#include "platform/cuda/kernels/device_texture.cuh"
#include "platform/cuda/kernels/sigmoid_kernels.h"
#include "rules/sigmoid_rules.h"

namespace zelsvm {
namespace {

constexpr unsigned blockThreads = 128;

// out[0] receives the sum of term(i) over i < n, by way of the blocks' sums in out; add(sum, part)
// adds.
template <typename Sum, typename Term, typename Add>
__device__ __forceinline__ void sumOverGrid(Sum* out, unsigned n, unsigned& counter,
                                            const Term& term, const Add& add) {
  __shared__ Sum sums[blockThreads];
  __shared__ bool flag;
  const auto combine = [&](unsigned into, unsigned from) { add(sums[into], sums[from]); };
  Sum sum{};
  for (unsigned i = blockIdx.x * blockThreads + threadIdx.x; i < n; i += gridDim.x * blockThreads)
    add(sum, term(i));
  sums[threadIdx.x] = sum;
  reduceBlock<blockThreads>(combine);
  if (threadIdx.x == 0) out[blockIdx.x] = sums[0];
  if (!isLastBlock(counter, flag)) return;

  sum = {};
  for (unsigned b = threadIdx.x; b < gridDim.x; b += blockThreads) add(sum, out[b]);
  sums[threadIdx.x] = sum;
  reduceBlock<blockThreads>(combine);
  if (threadIdx.x != 0) return;
  out[0] = sums[0];
  counter = 0;
}

__device__ __forceinline__ double weightOf(unsigned i) {
  return zelsvm_sigw == nullptr ? 1.0 : __ldg(zelsvm_sigw + i);
}

}  // namespace

template <typename T>
__global__ void __launch_bounds__(blockThreads)
    findSigmoidFunctionalKernel(T* out, T A, T B, unsigned n) {
  const auto term = [=](unsigned i) {
    const T f = sigmoidArgument(fetchDouble(zelsvm_tx_sigx[0], i), A, B);
    return weightOf(i) * sigmoidLoss(fetchDouble(zelsvm_tx_sigx[1], i), f, log(1 + exp(-fabs(f))));
  };
  sumOverGrid(out, n, zelsvm_reduction_sem, term, [](T& sum, T part) { sum += part; });
}

template <typename T>
__global__ void __launch_bounds__(blockThreads)
    findSigmoidHessianKernel(SigmoidHessian<T>* out, T A, T B, unsigned n) {
  const auto term = [=](unsigned i) {
    const T d = fetchDouble(zelsvm_tx_sigx[0], i);
    const T f = sigmoidArgument(d, A, B);
    return weightedDerivatives(
        weightOf(i), sigmoidDerivatives(d, fetchDouble(zelsvm_tx_sigx[1], i), f, exp(-fabs(f))));
  };
  const auto add = [](SigmoidHessian<T>& sum, const SigmoidHessian<T>& part) {
    addDerivatives(sum, part);
  };
  sumOverGrid(out, n, zelsvm_sigmoid_sem, term, add);
}

template __global__ void findSigmoidFunctionalKernel(double*, double, double, unsigned);
template __global__ void findSigmoidHessianKernel(SigmoidHessian<double>*, double, double,
                                                  unsigned);

}  // namespace zelsvm
