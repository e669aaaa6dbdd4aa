#include <cuda_runtime.h>

#include <cstring>

#include "platform/emulated/runtime/allocations.h"
#include "platform/emulated/runtime/error_state.h"

namespace zel {
namespace {

cudaError_t allocate(void** memory, std::size_t bytes, MemorySpace space) {
  if (memory == nullptr) return cudaErrorInvalidValue;
  *memory = nullptr;
  if (bytes == 0) return cudaSuccess;
  *memory = Allocations::instance().allocate(bytes, space);
  return *memory == nullptr ? cudaErrorMemoryAllocation : cudaSuccess;
}

cudaError_t release(void* memory, MemorySpace space) {
  if (memory == nullptr || Allocations::instance().release(memory, space)) return cudaSuccess;
  return cudaErrorInvalidValue;
}

enum class Side { host, device, byAddress };

bool holds(Side side, const void* memory, std::size_t bytes) {
  if (memory == nullptr) return false;
  if (side == Side::byAddress)
    side = Allocations::instance().isDeviceAddress(memory) ? Side::device : Side::host;
  return side == Side::host || Allocations::instance().isDeviceRange(memory, bytes);
}

cudaError_t copy(void* to, Side toSide, const void* from, Side fromSide, std::size_t bytes) {
  if (bytes == 0) return cudaSuccess;
  if (!holds(toSide, to, bytes) || !holds(fromSide, from, bytes)) return cudaErrorInvalidValue;
  std::memmove(to, from, bytes);
  return cudaSuccess;
}

cudaError_t copy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind) {
  switch (kind) {
    case cudaMemcpyHostToHost:
      return copy(to, Side::host, from, Side::host, bytes);
    case cudaMemcpyHostToDevice:
      return copy(to, Side::device, from, Side::host, bytes);
    case cudaMemcpyDeviceToHost:
      return copy(to, Side::host, from, Side::device, bytes);
    case cudaMemcpyDeviceToDevice:
      return copy(to, Side::device, from, Side::device, bytes);
    case cudaMemcpyDefault:
      return copy(to, Side::byAddress, from, Side::byAddress, bytes);
  }
  return cudaErrorInvalidMemcpyDirection;
}

cudaError_t fill(void* memory, int value, std::size_t bytes) {
  if (bytes == 0) return cudaSuccess;
  if (!Allocations::instance().isDeviceRange(memory, bytes)) return cudaErrorInvalidValue;
  std::memset(memory, value, bytes);
  return cudaSuccess;
}

}  // namespace

cudaError_t copyToSymbol(void* symbol, std::size_t symbolBytes, const void* from, std::size_t bytes,
                         std::size_t offset, cudaMemcpyKind kind) {
  if (kind != cudaMemcpyHostToDevice) return recordError(cudaErrorInvalidMemcpyDirection);
  if (from == nullptr || offset > symbolBytes || bytes > symbolBytes - offset)
    return recordError(cudaErrorInvalidValue);
  std::memcpy(static_cast<unsigned char*>(symbol) + offset, from, bytes);
  return cudaSuccess;
}

}  // namespace zel

cudaError_t cudaMalloc(void** memory, std::size_t bytes) {
  return zel::recordError(zel::allocate(memory, bytes, zel::MemorySpace::device));
}

cudaError_t cudaFree(void* memory) {
  return zel::recordError(zel::release(memory, zel::MemorySpace::device));
}

cudaError_t cudaHostAlloc(void** memory, std::size_t bytes, unsigned flags) {
  if (flags != 0) return zel::recordError(cudaErrorInvalidValue);
  return zel::recordError(zel::allocate(memory, bytes, zel::MemorySpace::pinned));
}

cudaError_t cudaFreeHost(void* memory) {
  return zel::recordError(zel::release(memory, zel::MemorySpace::pinned));
}

cudaError_t cudaMemcpy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind) {
  return zel::recordError(zel::copy(to, from, bytes, kind));
}

cudaError_t cudaMemset(void* memory, int value, std::size_t bytes) {
  return zel::recordError(zel::fill(memory, value, bytes));
}
