#include "platform/cuda/runtime/device_memory.h"

#include <cuda_runtime.h>

#include <limits>

#include "platform/cuda/runtime/device.h"

namespace zel {
namespace {

// More than there can be where the product has no room.
std::size_t byteCount(std::uint64_t count, std::size_t elementSize) {
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
  return count > most / elementSize ? most : count * elementSize;
}

}  // namespace

void DeviceMemoryRelease::operator()(void* memory) const noexcept { cudaFree(memory); }

void PinnedMemoryRelease::operator()(void* memory) const noexcept { cudaFreeHost(memory); }

DeviceMemory newDeviceMemory(std::uint64_t count, std::size_t elementSize) {
  void* memory = nullptr;
  if (count != 0) zelSafeCall(cudaMalloc(&memory, byteCount(count, elementSize)));
  return DeviceMemory(memory);
}

PinnedMemory newPinnedMemory(std::uint64_t count, std::size_t elementSize) {
  void* memory = nullptr;
  if (count != 0) zelSafeCall(cudaHostAlloc(&memory, byteCount(count, elementSize), 0));
  return PinnedMemory(memory);
}

void copyToDevice(void* to, const void* from, std::size_t bytes) {
  if (bytes != 0) zelSafeCall(cudaMemcpy(to, from, bytes, cudaMemcpyHostToDevice));
}

void copyToHost(void* to, const void* from, std::size_t bytes) {
  if (bytes != 0) zelSafeCall(cudaMemcpy(to, from, bytes, cudaMemcpyDeviceToHost));
}

void copyWithinDevice(void* to, const void* from, std::size_t bytes) {
  if (bytes != 0) zelSafeCall(cudaMemcpy(to, from, bytes, cudaMemcpyDeviceToDevice));
}

void clearDeviceMemory(void* memory, std::size_t bytes) {
  if (bytes != 0) zelSafeCall(cudaMemset(memory, 0, bytes));
}

}  // namespace zel
