// What a texture object looks at, for the host's kernels.
#pragma once

#include <cuda_runtime.h>

namespace zel::inline ZEL_PLATFORM {

// First byte of the texture's memory; null for a handle that is not alive.
const void* textureMemory(cudaTextureObject_t handle);

template <typename T>
const T* textureData(cudaTextureObject_t texture) {
  return static_cast<const T*>(textureMemory(texture));
}

}  // namespace zel::inline ZEL_PLATFORM
