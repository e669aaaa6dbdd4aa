#include "platform/cuda/kernels/block_reduction.cuh"
#include "platform/cuda/kernels/search_records.h"
#include "platform/cuda/kernels/set_kernels.h"

namespace zelsvm {
namespace {

struct Pair {
  unsigned i;
  unsigned j;
  SetStep step;
};

__device__ __forceinline__ void refresh(const SetArrays& set, const DeviceSetVariables& variables,
                                        unsigned groups, unsigned sample) {
  for (unsigned g = 0; g < groups; ++g) {
    set.rises[g * variables.samples + sample] = variables.rise(sample, g).offset;
    set.falls[g * variables.samples + sample] = variables.fall(sample, g).offset;
  }
}

// Adds the last step's rows to the sums of this thread's samples, and looks at what they give.
template <unsigned groups>
__device__ __forceinline__ Extremes<groups> findFirst(const SetArrays& set, unsigned size,
                                                      const Pair& last) {
  const double* const rowI = set.matrix + last.i * set.pitch;
  const double* const rowJ = set.matrix + last.j * set.pitch;
  Extremes<groups> found;
  found.clear();
#pragma unroll 2
  for (unsigned r = threadIdx.x; r < size; r += blockDim.x) {
    const double sum =
        set.sums[r] + (last.step.i * __ldg(rowI + r) + last.step.j * __ldg(rowJ + r));
    set.sums[r] = sum;
    for (unsigned g = 0; g < groups; ++g) {
      found.takeRise(g, set.rises[g * size + r] - sum, r);
      found.takeFall(g, set.falls[g * size + r] - sum);
    }
  }
  return found;
}

// The sample among this thread's whose pair with i promises most.
__device__ __forceinline__ Partner findSecond(const SetArrays& set, unsigned size, unsigned group,
                                              unsigned i, double up) {
  const double* const rowI = set.matrix + i * set.pitch;
  const double diagonal = set.diagonal[i];
  Partner found = noPartner;
#pragma unroll 2
  for (unsigned r = threadIdx.x; r < size; r += blockDim.x) {
    const double b = up - (set.falls[group * size + r] - set.sums[r]);
    if (!(b > 0)) continue;
    found.take(pairGain(b, pairCurvature(diagonal + set.diagonal[r], __ldg(rowI + r))), r);
  }
  return found;
}

}  // namespace

template <unsigned groups>
__global__ void __launch_bounds__(mostSetThreads)
    solveSetKernel(SetArrays set, DeviceSetVariables variables, double tolerance,
                   unsigned long long mostSteps, SetOutcome* outcome) {
  __shared__ Extremes<groups> extremes[mostSetThreads];
  __shared__ Partner partners[mostSetThreads];
  __shared__ Pair chosen;
  const auto size = static_cast<unsigned>(variables.samples);
  for (unsigned r = threadIdx.x; r < size; r += blockDim.x) {
    set.diagonal[r] = set.matrix[r * set.pitch + r];
    refresh(set, variables, groups, r);
  }
  Pair pair{0, 0, {0, 0}};
  unsigned long long steps = 0;
  bool isDone = false;
  for (;;) {
    foldByEights(findFirst<groups>(set, size, pair), extremes);
    __syncthreads();
    const Extremes<groups>& found = extremes[0];
    constexpr unsigned other = groups - 1;
    const auto gap = [&found](unsigned g) { return found.beta[g].up - found.beta[g].low; };
    const bool first = !(gap(other) > gap(0));
    const unsigned group = first ? 0 : other;
    const auto [up, low] = first ? found.beta[0] : found.beta[other];
    const unsigned i = first ? found.index[0] : found.index[other];
    isDone = !(up - low > tolerance) || i == noIndex;
    if (isDone || steps == mostSteps) break;
    const Partner partner = foldByEights(findSecond(set, size, group, i, up), partners);
    if (threadIdx.x == 0) {
      const unsigned j = partner.best.index;
      chosen = {i, j, {0, 0}};
      if (j != noIndex) {
        const double curvature =
            pairCurvature(set.diagonal[i] + set.diagonal[j], set.matrix[i * set.pitch + j]);
        chosen.step = variables.move(variables.rise(i, group), variables.fall(j, group),
                                     {set.sums[i], set.sums[j]}, curvature);
        refresh(set, variables, groups, i);
        refresh(set, variables, groups, j);
      }
    }
    __syncthreads();
    pair = chosen;
    isDone = pair.step.i == 0 && pair.step.j == 0;
    if (isDone) break;
    ++steps;
  }
  if (threadIdx.x == 0) *outcome = {steps, isDone};
}

template __global__ void solveSetKernel<1>(SetArrays, DeviceSetVariables, double,
                                           unsigned long long, SetOutcome*);
template __global__ void solveSetKernel<2>(SetArrays, DeviceSetVariables, double,
                                           unsigned long long, SetOutcome*);

}  // namespace zelsvm
