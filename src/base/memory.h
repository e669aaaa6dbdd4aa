// Memory of the vectors, and what the process could still get.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

// heap: the C heap. aligned: aligned heap memory taken over from elsewhere, released here but never
// allocated.
enum class MemoryKind : std::uint32_t { heap = 0, aligned = 1 };

// So many elements are allocated for a count: the next multiple of 512. A count too large to have
// one stays as it is, as no memory holds so many.
constexpr std::uint64_t roundedCapacity(std::uint64_t count) {
  const std::uint64_t rounded = (count + 511) & ~std::uint64_t{511};
  return rounded < count ? count : rounded;
}

// Memory for count elements of elementSize bytes, on a boundary of 64 bytes and not cleared; null
// for a count of 0. Throws std::bad_alloc (heap) or RuntimeException "Unable to allocate memory"
// (aligned).
void* allocateMemory(std::uint64_t count, std::size_t elementSize, MemoryKind kind);

// What allocateMemory gave for as many elements.
void freeMemory(void* memory, std::uint64_t count, std::size_t elementSize) noexcept;

// Bytes that an allocation could really get: what the system has left, less what allocateMemory has
// handed out and nobody has touched yet.
std::uint64_t obtainableMemory();

// Throws std::bad_alloc with a sentence when so much memory is not to be had.
void requireHostMemory(std::uint64_t count, std::size_t elementSize);

// Throws std::bad_alloc with a sentence.
[[noreturn]] void throwOutOfMemory();

[[noreturn]] void throwWrappedResize();

}  // namespace zel
