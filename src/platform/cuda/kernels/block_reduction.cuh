// Reductions within a block and over the blocks of a grid, always in the same order.
#pragma once

#include <cuda_runtime.h>

#include "platform/cuda/runtime/answer.h"

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

// Folds what the block's threads found, eight entries at a time; the shared array has one for each
// of them, whose number is a power of two. Thread 0 gets the result, which stays in entry 0 for the
// others to read after a barrier.
template <typename Entry>
__device__ __forceinline__ Entry foldByEights(Entry found, Entry* shared) {
  shared[threadIdx.x] = found;
  for (unsigned left = blockDim.x; left > 1;) {
    const unsigned next = left > 8 ? left / 8 : 1;
    __syncthreads();
    if (threadIdx.x < next) {
      for (unsigned k = next; k < left; k += next) found.fold(shared[threadIdx.x + k]);
      shared[threadIdx.x] = found;
    }
    left = next;
  }
  return found;
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

// Gives the host an answer; called by one thread.
template <typename T>
__device__ __forceinline__ void giveAnswer(zel::Ticketed<T>* place, const T& value,
                                           unsigned long long ticket) {
  place->value = value;
  __threadfence_system();
  *static_cast<volatile unsigned long long*>(&place->ticket) = ticket;
}

}  // namespace zelsvm
