// Reductions within a block and over the blocks of a grid, always in the same order.
#pragma once

#include <cuda_runtime.h>

namespace zelsvm {

// Runs combine(into, from) on pairs of the block's `size` shared entries, a power of two, until
// entry 0 has met all of them. Thread 0 may read it at once, the others after a barrier.
template <unsigned size, typename Combine>
__device__ __forceinline__ void reduceBlock(const Combine& combine) {
#pragma unroll
  for (unsigned stride = size / 2; stride > 0; stride /= 2) {
    __syncthreads();
    if (threadIdx.x < stride) combine(threadIdx.x, threadIdx.x + stride);
  }
}

// Called by all threads after thread 0 has published the block's result: true in the block that
// arrives last, which sees the results of all others. flag is shared; the counter is 0 before the
// launch, and the last block sets it back.
__device__ __forceinline__ bool isLastBlock(unsigned& counter, bool& flag) {
  if (threadIdx.x == 0) {
    __threadfence();
    flag = atomicInc(&counter, gridDim.x) == gridDim.x - 1;
    __threadfence();
  }
  __syncthreads();
  return flag;
}

}  // namespace zelsvm
