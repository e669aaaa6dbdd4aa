#include <zel_platform/launch.h>

#include "platform/cuda/kernels/block_reduction.cuh"
#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/kernels/smo_variable.cuh"

namespace zelsvm {
namespace {

constexpr unsigned sweepBlock = 128;

__device__ __forceinline__ unsigned firstPosition() {
  return blockIdx.x * blockDim.x + threadIdx.x;
}

__device__ __forceinline__ unsigned positionStride() { return gridDim.x * blockDim.x; }

// Moves the pair's multipliers to their constrained optimum; k is K_ij.
template <bool unitDiagonal>
__device__ __forceinline__ SmoDelta<double> movePair(double* alpha, unsigned i, unsigned j,
                                                     double k) {
  const bool positiveI = isPositive(i);
  const bool positiveJ = isPositive(j);
  const bool sameSign = positiveI == positiveJ;
  const double curvature =
      pairCurvature(diagonalOf<unitDiagonal>(i) + diagonalOf<unitDiagonal>(j), k);
  const double step =
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

template <bool nu>
__global__ void __launch_bounds__(searchThreads)
    selectSmoWorkingSetKernel(Extremes<2>* blocks, zel::Ticketed<Extremes<2>>* answer,
                              unsigned long long ticket, double* G, GradientStep step, unsigned l) {
  ZEL_DYNAMIC_SHARED(Extremes<2>, extremes);
  __shared__ bool flag;
  Extremes<2> found;
  found.clear();
  for (unsigned t = firstPosition(); t < l; t += positionStride()) {
    const char2 status = fetchBytes(zelsvm_tx_ys, t);
    const bool positive = status.y > 0;
    double g = G[t];
    if (step.rowI != nullptr) {
      const unsigned sample = sampleOf(t);
      g = updatedGradient(g, positive ? 1 : -1, step.stepI, __ldg(step.rowI + sample), step.stepJ,
                          __ldg(step.rowJ + sample));
      G[t] = g;
    }
    if (status.x == 0) continue;
    const double a = fetchDouble(zelsvm_tx_alpha, t);
    const double c = upperBound(t, positive);
    const double v = violation(positive, g);
    const unsigned group = nu && !positive ? 1 : 0;
    if (inUpperSet(positive, a, c)) found.takeRise(group, v, t);
    if (inLowerSet(positive, a, c)) found.takeFall(group, v);
  }
  found = foldByEights(found, extremes);
  if (threadIdx.x == 0) blocks[blockIdx.x] = found;
  if (!isLastBlock(zelsvm_cnv_sem, flag)) return;

  found.clear();
  for (unsigned b = threadIdx.x; b < gridDim.x; b += blockDim.x) found.fold(blocks[b]);
  found = foldByEights(found, extremes);
  if (threadIdx.x != 0) return;
  zelsvm_cnv_sem = 0;
  giveAnswer(answer, found, ticket);
}

template <bool nu, bool unitDiagonal>
__global__ void __launch_bounds__(searchThreads)
    findSmoDeltaKernel(Partner* blocks, zel::Ticketed<MovedPair>* answer, unsigned long long ticket,
                       FirstOfPair first, FirstOfPair second, double* alpha, unsigned l) {
  __shared__ Partner partners[searchThreads];
  __shared__ bool flag;
  const double diagonal = diagonalOf<unitDiagonal>(first.index);
  const double diagonal2 = diagonalOf<unitDiagonal>(second.index);
  Partner found = noPartner;
  for (unsigned t = firstPosition(); t < l; t += positionStride()) {
    if (fetchBytes(zelsvm_tx_ys, t).x == 0) continue;
    const SmoVariable x = fetchVariable(t);
    const bool other = nu && !x.positive;
    const double b = (other ? second.up : first.up) - x.v;
    if (!inLowerSet(x.positive, x.a, x.c) || !(b > 0)) continue;
    const double k = __ldg((other ? second.row : first.row) + sampleOf(t));
    const double diagonalSum = (other ? diagonal2 : diagonal) + diagonalOf<unitDiagonal>(t);
    found.take(pairGain(b, pairCurvature(diagonalSum, k)), t);
  }
  found = foldByEights(found, partners);
  if (threadIdx.x == 0) blocks[blockIdx.x] = found;
  if (!isLastBlock(zelsvm_wss_sem, flag)) return;

  found = noPartner;
  for (unsigned b = threadIdx.x; b < gridDim.x; b += blockDim.x) found.fold(blocks[b]);
  found = foldByEights(found, partners);
  if (threadIdx.x != 0) return;
  MovedPair moved{found.best.index, {0, 0}};
  if (moved.j != noIndex) {
    const bool other = nu && !isPositive(moved.j);
    const double k = __ldg((other ? second.row : first.row) + sampleOf(moved.j));
    moved.delta = movePair<unitDiagonal>(alpha, other ? second.index : first.index, moved.j, k);
  }
  zelsvm_wss_sem = 0;
  giveAnswer(answer, moved, ticket);
}

template <bool nu>
__global__ void __launch_bounds__(sweepBlock)
    reduceSmoWorkingSetKernel(signed char* marks, double up, double up2, double low, double low2,
                              unsigned l) {
  for (unsigned t = firstPosition(); t < l; t += positionStride()) {
    const bool active = fetchBytes(zelsvm_tx_ys, t).x != 0;
    const SmoVariable x = fetchVariable(t);
    const bool other = nu && !x.positive;
    const bool leaves =
        active && isShrinkable(x.positive, x.a, x.c, x.v, other ? up2 : up, other ? low2 : low);
    marks[t] = leaves ? 1 : 0;
  }
}

template __global__ void initSmoGradientKernel(double*, const double*, unsigned, unsigned, unsigned,
                                               unsigned);

#define ZEL_INSTANTIATE(nu)                                                                    \
  template __global__ void selectSmoWorkingSetKernel<nu>(                                      \
      Extremes<2>*, zel::Ticketed<Extremes<2>>*, unsigned long long, double*, GradientStep,    \
      unsigned);                                                                               \
  template __global__ void reduceSmoWorkingSetKernel<nu>(signed char*, double, double, double, \
                                                         double, unsigned);
#define ZEL_INSTANTIATE_DELTA(nu, unitDiagonal)                                                   \
  template __global__ void findSmoDeltaKernel<nu, unitDiagonal>(                                  \
      Partner*, zel::Ticketed<MovedPair>*, unsigned long long, FirstOfPair, FirstOfPair, double*, \
      unsigned);
ZEL_INSTANTIATE(false)
ZEL_INSTANTIATE(true)
ZEL_INSTANTIATE_DELTA(false, false)
ZEL_INSTANTIATE_DELTA(false, true)
ZEL_INSTANTIATE_DELTA(true, false)
ZEL_INSTANTIATE_DELTA(true, true)
#undef ZEL_INSTANTIATE
#undef ZEL_INSTANTIATE_DELTA

}  // namespace zelsvm
