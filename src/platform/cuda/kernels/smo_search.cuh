// How searches over the variables fold their candidates: the one met earlier keeps a tie.
#pragma once

#include <limits>

#include "platform/cuda/kernels/block_reduction.cuh"
#include "rules/smo_records.h"

namespace zelsvm {

inline constexpr unsigned searchBlock = 32;
inline constexpr double infinity = std::numeric_limits<double>::infinity();

// Extremes and the variable of the maximum.
template <typename T>
struct UpperSearch {
  SmoUpperBeta<T> beta{-infinity, infinity};
  unsigned index = noIndex;
};

template <typename T>
__device__ __forceinline__ void foldUpper(SmoUpperBeta<T>& best, unsigned& bestIndex,
                                          const SmoUpperBeta<T>& later, unsigned laterIndex) {
  if (later.up > best.up) {
    best.up = later.up;
    bestIndex = laterIndex;
  }
  best.low = fmin(best.low, later.low);
}

template <typename T>
__device__ __forceinline__ void foldLower(SmoLowerBeta<T>& best, const SmoLowerBeta<T>& later) {
  if (later.value < best.value) best = later;
}

// The block's best of what its threads found, in entry 0 of both arrays.
template <typename T>
__device__ __forceinline__ void reduceUpper(const UpperSearch<T>& found, SmoUpperBeta<T>* betas,
                                            unsigned* indices) {
  betas[threadIdx.x] = found.beta;
  indices[threadIdx.x] = found.index;
  reduceBlock<searchBlock>([=](unsigned into, unsigned from) {
    foldUpper(betas[into], indices[into], betas[from], indices[from]);
  });
}

// This thread's share of the blocks' results.
template <typename T>
__device__ __forceinline__ UpperSearch<T> searchBlocks(const SmoUpperBeta<T>* upper,
                                                       const unsigned* index) {
  UpperSearch<T> found;
  for (unsigned b = threadIdx.x; b < gridDim.x; b += searchBlock)
    foldUpper(found.beta, found.index, upper[b], index[b]);
  return found;
}

}  // namespace zelsvm
