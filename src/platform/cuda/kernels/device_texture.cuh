// Texture fetches.
#pragma once

#include <cuda_runtime.h>

namespace zelsvm {

// Element i of a texture over doubles, which come as two 32-bit halves, the low one first.
__device__ __forceinline__ double fetchDouble(cudaTextureObject_t texture, unsigned long long i) {
  const auto halves = tex1Dfetch<int2>(texture, static_cast<int>(i));
  return __hiloint2double(halves.y, halves.x);
}

__device__ __forceinline__ char2 fetchBytes(cudaTextureObject_t texture, unsigned i) {
  return tex1Dfetch<char2>(texture, static_cast<int>(i));
}

}  // namespace zelsvm
