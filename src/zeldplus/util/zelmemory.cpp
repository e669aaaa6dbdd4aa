#include "zeldplus/inc/zelmemory.h"

#include <cstdlib>
#include <limits>
#include <new>

#include "platform/system/available_memory.h"
#include "platform/system/large_pages.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

// Below this size the system is not asked what it has left.
constexpr std::uint64_t unquestionedBytes = std::uint64_t{64} << 20;

class OutOfMemory : public std::bad_alloc {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "Unable to allocate memory"; }
};

std::uint64_t byteCount(std::uint64_t count, std::size_t elementSize) {
  if (count > std::numeric_limits<std::uint64_t>::max() / 2 / elementSize) throw OutOfMemory{};
  return count * elementSize;
}

cudaMemcpyKind direction(MemoryKind to, MemoryKind from) {
  if (to == MemoryKind::device)
    return from == MemoryKind::device ? cudaMemcpyDeviceToDevice : cudaMemcpyHostToDevice;
  return from == MemoryKind::device ? cudaMemcpyDeviceToHost : cudaMemcpyHostToHost;
}

}  // namespace

void requireHostMemory(std::uint64_t count, std::size_t elementSize) {
  const std::uint64_t bytes = byteCount(count, elementSize);
  // The system promises more than it has, so a large request is checked before it is believed.
  if (bytes > unquestionedBytes && bytes > availableHostMemory()) throw OutOfMemory{};
}

void* allocateMemory(std::uint64_t count, std::size_t elementSize, MemoryKind kind) {
  if (count == 0) return nullptr;
  void* memory = nullptr;
  switch (kind) {
    case MemoryKind::heap:
      requireHostMemory(count, elementSize);
      memory = std::malloc(byteCount(count, elementSize));
      if (memory == nullptr) throw OutOfMemory{};
      preferLargePages(memory, byteCount(count, elementSize));
      break;
    case MemoryKind::pinned:
      zelSafeCall(cudaHostAlloc(&memory, byteCount(count, elementSize), 0));
      break;
    case MemoryKind::device:
      zelSafeCall(cudaMalloc(&memory, byteCount(count, elementSize)));
      break;
    case MemoryKind::aligned:
      break;
  }
  if (memory == nullptr) throw RuntimeException("Unable to allocate memory");
  return memory;
}

void freeMemory(void* memory, MemoryKind kind) noexcept {
  if (memory == nullptr) return;
  switch (kind) {
    case MemoryKind::heap:
    case MemoryKind::aligned:
      std::free(memory);
      break;
    case MemoryKind::pinned:
      cudaFreeHost(memory);
      break;
    case MemoryKind::device:
      cudaFree(memory);
      break;
  }
}

void copyMemory(void* to, MemoryKind toKind, const void* from, MemoryKind fromKind,
                std::size_t bytes) {
  zelSafeCall(cudaMemcpy(to, from, bytes, direction(toKind, fromKind)));
}

void clearDeviceMemory(void* memory, std::size_t bytes) {
  zelSafeCall(cudaMemset(memory, 0, bytes));
}

void throwWrappedResize() {
  throw RuntimeException("Error in attempts to reallocate wrapped memory.");
}

}  // namespace zel::inline ZEL_PLATFORM
