#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/host/allocations.h"
#include "platform/host/error_state.h"
#include "platform/host/texture_view.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

struct Texture {
  const void* memory;
  std::size_t bytes;
  std::uint32_t generation;  // odd while the texture lives
};

// A handle is the slot's number with its generation above, so that a dead handle is recognised
// after its slot has been taken again. Handles are never 0.
std::mutex lock;  // of the slots
std::vector<Texture>& textures() {
  static auto* const slots = new std::vector<Texture>;
  return *slots;
}

Texture* find(cudaTextureObject_t handle) {
  const auto slot = static_cast<std::uint32_t>(handle);
  const auto generation = static_cast<std::uint32_t>(handle >> 32);
  if (generation % 2 == 0 || slot >= textures().size()) return nullptr;
  Texture& texture = textures()[slot];
  return texture.generation == generation ? &texture : nullptr;
}

// 8, 16 or 32 bits in the first channel, the others the same or absent.
bool isValid(const cudaChannelFormatDesc& channels) {
  const int bits = channels.x;
  const auto matches = [bits](int other) { return other == 0 || other == bits; };
  return (bits == 8 || bits == 16 || bits == 32) && matches(channels.y) && matches(channels.z) &&
         matches(channels.w);
}

cudaError_t create(cudaTextureObject_t* handle, const cudaResourceDesc* resource) {
  if (handle == nullptr || resource == nullptr || resource->resType != cudaResourceTypeLinear)
    return cudaErrorInvalidValue;
  const auto& linear = resource->res.linear;
  if (linear.sizeInBytes == 0 || !isValid(linear.desc) ||
      !Allocations::instance().isDeviceRange(linear.devPtr, linear.sizeInBytes))
    return cudaErrorInvalidValue;
  const std::scoped_lock locked(lock);
  auto& slots = textures();
  auto slot = std::find_if(slots.begin(), slots.end(),
                           [](const Texture& texture) { return texture.generation % 2 == 0; });
  if (slot == slots.end()) slot = slots.insert(slots.end(), Texture{});
  *slot = {linear.devPtr, linear.sizeInBytes, slot->generation + 1};
  *handle = (cudaTextureObject_t{slot->generation} << 32) |
            static_cast<std::uint32_t>(slot - slots.begin());
  return cudaSuccess;
}

cudaError_t destroy(cudaTextureObject_t handle) {
  const std::scoped_lock locked(lock);
  Texture* const texture = find(handle);
  if (texture == nullptr) return cudaErrorInvalidValue;
  ++texture->generation;
  return cudaSuccess;
}

}  // namespace

const void* textureMemory(cudaTextureObject_t handle) {
  const std::scoped_lock locked(lock);
  const Texture* const texture = find(handle);
  if (texture == nullptr) return nullptr;
  const bool alive = Allocations::instance().isDeviceRange(texture->memory, texture->bytes);
  return alive ? texture->memory : nullptr;
}

}  // namespace zel::inline ZEL_PLATFORM

cudaError_t cudaCreateTextureObject(cudaTextureObject_t* texture, const cudaResourceDesc* resource,
                                    const cudaTextureDesc* description,
                                    const cudaResourceViewDesc* view) {
  if (description == nullptr || view != nullptr) return zel::recordError(cudaErrorInvalidValue);
  return zel::recordError(zel::create(texture, resource));
}

cudaError_t cudaDestroyTextureObject(cudaTextureObject_t texture) {
  return zel::recordError(zel::destroy(texture));
}
