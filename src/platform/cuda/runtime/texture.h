// Read-only views of device vectors through texture objects.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <cstdint>

#include "platform/cuda/runtime/device_vector.h"

namespace zel {

// Owns one texture object handle, 0 when there is none.
class AbstractTexture {
 public:
  AbstractTexture(const AbstractTexture&) = delete;
  AbstractTexture& operator=(const AbstractTexture&) = delete;
  virtual ~AbstractTexture();
  [[nodiscard]] cudaTextureObject_t handle() const { return object; }

 protected:
  // Linear resource over bytes at data; throws RuntimeException.
  AbstractTexture(void* data, std::size_t bytes, const cudaChannelFormatDesc& channels);

 private:
  cudaTextureObject_t object = 0;
};

// Two signed channels: the low and high words of a double, or the two bytes of a char2.
template <typename T>
constexpr cudaChannelFormatDesc channelFormat() {
  constexpr int bits = sizeof(T) == sizeof(double) ? 32 : 8;
  return {bits, bits, 0, 0, cudaChannelFormatKindSigned};
}

// Sees the vector's memory as it was at construction: a vector that moved needs a new texture.
template <typename T>
class LinearTexture : public AbstractTexture {
  static_assert(sizeof(T) == sizeof(double) || sizeof(T) == sizeof(char2));

 public:
  explicit LinearTexture(DeviceVector<T>& vector)
      : AbstractTexture(vector.data(), vector.size() * sizeof(T), channelFormat<T>()) {}
};

}  // namespace zel
