#include "platform/emulated/runtime/textures.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

#include "platform/emulated/runtime/allocations.h"
#include "platform/emulated/runtime/error_state.h"

namespace zel {
namespace {

struct Texture {
  const unsigned char* memory;
  std::size_t bytes;
  std::size_t texelBytes;
  std::uint32_t generation;  // odd while the texture lives
};

// A handle is the slot's number with its generation above, so that a dead handle is recognised
// after its slot has been taken again. Handles are never 0.
std::mutex lock;  // of the slots
std::vector<Texture>& textures() {
  static auto* const slots = new std::vector<Texture>;
  return *slots;
}

cudaTextureObject_t handleOf(const Texture& texture) {
  return (cudaTextureObject_t{texture.generation} << 32) |
         static_cast<std::uint32_t>(&texture - textures().data());
}

Texture* find(cudaTextureObject_t handle) {
  const std::size_t slot = textureSlot(handle);
  if (slot >= textures().size()) return nullptr;
  Texture& texture = textures()[slot];
  return texture.generation % 2 == 1 && handleOf(texture) == handle ? &texture : nullptr;
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
  const int bits = linear.desc.x + linear.desc.y + linear.desc.z + linear.desc.w;
  const std::scoped_lock locked(lock);
  auto& slots = textures();
  auto slot = std::find_if(slots.begin(), slots.end(),
                           [](const Texture& texture) { return texture.generation % 2 == 0; });
  if (slot == slots.end()) slot = slots.insert(slots.end(), Texture{});
  *slot = {static_cast<const unsigned char*>(linear.devPtr), linear.sizeInBytes,
           static_cast<std::size_t>(bits / 8), slot->generation + 1};
  *handle = handleOf(*slot);
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

std::vector<TextureView> textureViews() {
  const std::scoped_lock locked(lock);
  std::vector<TextureView> views;
  for (const Texture& texture : textures()) {
    const bool usable = texture.generation % 2 == 1 &&
                        Allocations::instance().isDeviceRange(texture.memory, texture.bytes);
    views.push_back(
        {handleOf(texture), usable ? texture.memory : nullptr, texture.bytes, texture.texelBytes});
  }
  return views;
}

}  // namespace zel

cudaError_t cudaCreateTextureObject(cudaTextureObject_t* texture, const cudaResourceDesc* resource,
                                    const cudaTextureDesc* description,
                                    const cudaResourceViewDesc* view) {
  if (description == nullptr || view != nullptr) return zel::recordError(cudaErrorInvalidValue);
  return zel::recordError(zel::create(texture, resource));
}

cudaError_t cudaDestroyTextureObject(cudaTextureObject_t texture) {
  return zel::recordError(zel::destroy(texture));
}
