// Memory by kind: the untyped operations behind the vectors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zel::inline ZEL_PLATFORM {

// heap: the C heap. aligned: aligned heap memory taken over from elsewhere, released here but never
// allocated. pinned: page-locked host memory. device: device memory.
enum class MemoryKind : std::uint32_t { heap = 0, aligned = 1, pinned = 2, device = 3 };

// Elements allocated for count of them: the next multiple of 512. Counts that have none stay as
// they are: no memory holds so many.
constexpr std::uint64_t roundedCapacity(std::uint64_t count) {
  const std::uint64_t rounded = (count + 511) & ~std::uint64_t{511};
  return rounded < count ? count : rounded;
}

// Memory for count elements of elementSize bytes, not cleared; null for a count of 0. Throws
// std::bad_alloc (heap), RuntimeException with the runtime's text (pinned, device) or "Unable to
// allocate memory" (aligned).
void* allocateMemory(std::uint64_t count, std::size_t elementSize, MemoryKind kind);

void freeMemory(void* memory, MemoryKind kind) noexcept;

// One copy whose direction follows from the two kinds. Throws RuntimeException.
void copyMemory(void* to, MemoryKind toKind, const void* from, MemoryKind fromKind,
                std::size_t bytes);

// Clears device memory. Throws RuntimeException.
void clearDeviceMemory(void* memory, std::size_t bytes);

// Throws std::bad_alloc with a sentence when so many bytes of host memory are not to be had.
void requireHostMemory(std::uint64_t count, std::size_t elementSize);

[[noreturn]] void throwWrappedResize();

}  // namespace zel::inline ZEL_PLATFORM
