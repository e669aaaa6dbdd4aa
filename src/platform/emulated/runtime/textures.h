// What the texture objects look at, for launches.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <vector>

namespace zel {

// Memory null for a texture that is destroyed, or whose memory was freed.
struct TextureView {
  cudaTextureObject_t handle = 0;
  const unsigned char* memory = nullptr;
  std::size_t bytes = 0;
  std::size_t texelBytes = 0;
};

// By the slot that a handle's low half names.
std::vector<TextureView> textureViews();

inline std::size_t textureSlot(cudaTextureObject_t handle) {
  return static_cast<std::uint32_t>(handle);
}

}  // namespace zel
