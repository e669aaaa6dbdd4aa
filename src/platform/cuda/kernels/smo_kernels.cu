#include <zel_platform/launch.h>

#include "platform/cuda/kernels/block_reduction.cuh"
#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/kernels/smo_search.cuh"
#include "platform/cuda/kernels/smo_variable.cuh"

namespace zelsvm {
namespace {

constexpr unsigned sweepBlock = 128;

__device__ __forceinline__ unsigned firstPosition() {
  return blockIdx.x * blockDim.x + threadIdx.x;
}

__device__ __forceinline__ unsigned positionStride() { return gridDim.x * blockDim.x; }

// Moves the pair's multipliers to their constrained optimum; k is K_ij.
template <typename T, bool unitDiagonal>
__device__ __forceinline__ SmoDelta<T> movePair(T* alpha, unsigned i, unsigned j, T k) {
  const bool positiveI = isPositive(i);
  const bool positiveJ = isPositive(j);
  const bool sameSign = positiveI == positiveJ;
  const T curvature = pairCurvature(diagonalOf<unitDiagonal>(i) + diagonalOf<unitDiagonal>(j), k);
  const T step =
      pairStep(sameSign, fetchDouble(zelsvm_tx_f, i), fetchDouble(zelsvm_tx_f, j), curvature);
  const PairValues old{fetchDouble(zelsvm_tx_alpha, i), fetchDouble(zelsvm_tx_alpha, j)};
  const PairValues moved =
      clippedPair(sameSign, old, step, {upperBound(i, positiveI), upperBound(j, positiveJ)});
  alpha[i] = moved.i;
  alpha[j] = moved.j;
  return {moved.i - old.i, moved.j - old.j};
}

}  // namespace

template <typename T>
__global__ void __launch_bounds__(sweepBlock)
    initSmoGradientKernel(T* G, const T* Q, unsigned ld, unsigned first, unsigned count,
                          unsigned l) {
  for (unsigned i = firstPosition(); i < l; i += positionStride()) {
    const bool positive = isPositive(i);
    const T* const row = Q + sampleOf(i);
    T sum = 0;
#pragma unroll 4
    for (unsigned c = 0; c < count; ++c) {
      const T a = fetchDouble(zelsvm_tx_alpha, first + c);
      const T weight = isPositive(first + c) == positive ? a : -a;
      sum = fusedMultiplyAdd(__ldg(row + static_cast<unsigned long long>(c) * ld), weight, sum);
    }
    G[i] += sum;
  }
}

template <typename T, bool nu>
__global__ void __launch_bounds__(searchBlock)
    selectSmoWorkingSetKernel(SmoUpperBeta<T>* upper, unsigned* index, SmoUpperBeta<T>* upper2,
                              unsigned* index2, const unsigned* activeSet, unsigned activeCount) {
  ZEL_DYNAMIC_SHARED(SmoUpperBeta<double>, sharedUpperBeta);
  __shared__ unsigned sidxp[searchBlock];
  __shared__ unsigned sidxn[searchBlock];
  __shared__ bool flag;
  SmoUpperBeta<T>* const sharedUpperBeta2 = sharedUpperBeta + searchBlock;
  UpperSearch<T> found;
  UpperSearch<T> found2;
  for (unsigned q = firstPosition(); q < activeCount; q += positionStride()) {
    const unsigned t = __ldg(activeSet + q);
    const SmoVariable x = fetchVariable(t);
    const UpperSearch<T> none;
    const SmoUpperBeta<T> beta{inUpperSet(x.positive, x.a, x.c) ? x.v : none.beta.up,
                               inLowerSet(x.positive, x.a, x.c) ? x.v : none.beta.low};
    if (nu && !x.positive)
      foldUpper(found2.beta, found2.index, beta, t);
    else
      foldUpper(found.beta, found.index, beta, t);
  }
  reduceUpper(found, sharedUpperBeta, sidxp);
  if constexpr (nu) reduceUpper(found2, sharedUpperBeta2, sidxn);
  if (threadIdx.x == 0) {
    upper[blockIdx.x] = sharedUpperBeta[0];
    index[blockIdx.x] = sidxp[0];
    if constexpr (nu) upper2[blockIdx.x] = sharedUpperBeta2[0];
    if constexpr (nu) index2[blockIdx.x] = sidxn[0];
  }
  if (!isLastBlock(zelsvm_cnv_sem, flag)) return;

  reduceUpper(searchBlocks(upper, index), sharedUpperBeta, sidxp);
  if constexpr (nu) reduceUpper(searchBlocks(upper2, index2), sharedUpperBeta2, sidxn);
  if (threadIdx.x != 0) return;
  *upper = sharedUpperBeta[0];
  *index = sidxp[0];
  if constexpr (nu) *upper2 = sharedUpperBeta2[0];
  if constexpr (nu) *index2 = sidxn[0];
  zelsvm_cnv_sem = 0;
}

template <typename T, bool nu, bool unitDiagonal>
__global__ void __launch_bounds__(searchBlock)
    findSmoDeltaKernel(SmoDelta<T>* delta, SmoLowerBeta<T>* lower, const SmoUpperBeta<T>* upper,
                       const unsigned* index, const SmoUpperBeta<T>* upper2, const unsigned* index2,
                       const T* row, const T* row2, T* alpha, const unsigned* activeSet,
                       unsigned activeCount) {
  ZEL_DYNAMIC_SHARED(SmoLowerBeta<double>, sharedLowerBeta);
  __shared__ bool flag;
  const auto keepBest = [=](unsigned into, unsigned from) {
    foldLower(sharedLowerBeta[into], sharedLowerBeta[from]);
  };
  const SmoLowerBeta<T> none{infinity, noIndex};
  const T up = upper->up;
  const T up2 = upper2->up;
  const T diagonal = diagonalOf<unitDiagonal>(*index);
  const T diagonal2 = diagonalOf<unitDiagonal>(*index2);
  SmoLowerBeta<T> best = none;
  for (unsigned q = firstPosition(); q < activeCount; q += positionStride()) {
    const unsigned t = __ldg(activeSet + q);
    const SmoVariable x = fetchVariable(t);
    const bool second = nu && !x.positive;
    const T b = (second ? up2 : up) - x.v;
    if (!inLowerSet(x.positive, x.a, x.c) || !(b > 0)) continue;
    const T k = __ldg((second ? row2 : row) + sampleOf(t));
    const T diagonalSum = (second ? diagonal2 : diagonal) + diagonalOf<unitDiagonal>(t);
    foldLower(best, {pairGain(b, pairCurvature(diagonalSum, k)), t});
  }
  sharedLowerBeta[threadIdx.x] = best;
  reduceBlock<searchBlock>(keepBest);
  if (threadIdx.x == 0) lower[blockIdx.x] = sharedLowerBeta[0];
  if (!isLastBlock(zelsvm_wss_sem, flag)) return;

  best = none;
  for (unsigned b = threadIdx.x; b < gridDim.x; b += searchBlock) foldLower(best, lower[b]);
  sharedLowerBeta[threadIdx.x] = best;
  reduceBlock<searchBlock>(keepBest);
  if (threadIdx.x != 0) return;
  const unsigned j = sharedLowerBeta[0].index;
  *lower = sharedLowerBeta[0];
  *delta = {0, 0};
  if (j != noIndex) {
    const bool second = nu && !isPositive(j);
    const T k = __ldg((second ? row2 : row) + sampleOf(j));
    *delta = movePair<T, unitDiagonal>(alpha, second ? *index2 : *index, j, k);
  }
  zelsvm_wss_sem = 0;
}

template <typename T>
__global__ void __launch_bounds__(sweepBlock)
    updateSmoGradientKernel(T* G, const SmoDelta<T>* delta, unsigned i, const T* rowI, unsigned j,
                            const T* rowJ, unsigned l) {
  const T stepI = isPositive(i) ? delta->deltaI : -delta->deltaI;
  const T stepJ = isPositive(j) ? delta->deltaJ : -delta->deltaJ;
  for (unsigned k = firstPosition(); k < l; k += positionStride()) {
    const unsigned sample = sampleOf(k);
    G[k] = updatedGradient(G[k], isPositive(k) ? 1 : -1, stepI, __ldg(rowI + sample), stepJ,
                           __ldg(rowJ + sample));
  }
}

template <typename T, bool nu>
__global__ void __launch_bounds__(sweepBlock)
    reduceSmoWorkingSetKernel(char2* status, T up, T up2, T low, T low2, const unsigned* activeSet,
                              unsigned activeCount) {
  for (unsigned q = firstPosition(); q < activeCount; q += positionStride()) {
    const unsigned t = __ldg(activeSet + q);
    const SmoVariable x = fetchVariable(t);
    const bool second = nu && !x.positive;
    if (isShrinkable(x.positive, x.a, x.c, x.v, second ? up2 : up, second ? low2 : low))
      status[t].x = 1;
  }
}

template __global__ void initSmoGradientKernel(double*, const double*, unsigned, unsigned, unsigned,
                                               unsigned);
template __global__ void updateSmoGradientKernel(double*, const SmoDelta<double>*, unsigned,
                                                 const double*, unsigned, const double*, unsigned);

#define ZEL_INSTANTIATE(nu)                                                                        \
  template __global__ void selectSmoWorkingSetKernel<double, nu>(SmoUpperBeta<double>*, unsigned*, \
                                                                 SmoUpperBeta<double>*, unsigned*, \
                                                                 const unsigned*, unsigned);       \
  template __global__ void reduceSmoWorkingSetKernel<double, nu>(                                  \
      char2*, double, double, double, double, const unsigned*, unsigned);
#define ZEL_INSTANTIATE_DELTA(nu, unitDiagonal)                                               \
  template __global__ void findSmoDeltaKernel<double, nu, unitDiagonal>(                      \
      SmoDelta<double>*, SmoLowerBeta<double>*, const SmoUpperBeta<double>*, const unsigned*, \
      const SmoUpperBeta<double>*, const unsigned*, const double*, const double*, double*,    \
      const unsigned*, unsigned);
ZEL_INSTANTIATE(false)
ZEL_INSTANTIATE(true)
ZEL_INSTANTIATE_DELTA(false, false)
ZEL_INSTANTIATE_DELTA(false, true)
ZEL_INSTANTIATE_DELTA(true, false)
ZEL_INSTANTIATE_DELTA(true, true)
#undef ZEL_INSTANTIATE
#undef ZEL_INSTANTIATE_DELTA

}  // namespace zelsvm
