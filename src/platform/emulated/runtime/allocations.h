// The memory that the device in software has handed out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace zel {

enum class MemorySpace { device, pinned };

// Owns every live allocation. Ranges are looked up by binary search, cheap enough for every call
// that names device memory. Any thread may call.
class Allocations {
 public:
  static Allocations& instance();

  // 64-byte aligned memory, poisoned; null where so much is not to be had.
  void* allocate(std::size_t bytes, MemorySpace space) noexcept;
  // False unless the pointer is what allocate returned for this space.
  bool release(void* memory, MemorySpace space) noexcept;

  // True if all the bytes lie within one live device allocation; no bytes lie anywhere.
  [[nodiscard]] bool isDeviceRange(const void* memory, std::size_t bytes) const;
  // True if the address lies within a live device allocation.
  [[nodiscard]] bool isDeviceAddress(const void* memory) const;
  // False once something was written beside a live allocation; true again from then on, so that one
  // fault is reported once.
  bool guardsHold();

  [[nodiscard]] std::uint64_t deviceBytes() const;

 private:
  struct Range {
    std::uintptr_t begin;
    std::uintptr_t end;
    MemorySpace space;
  };
  // The caller holds the lock.
  [[nodiscard]] const Range* find(const void* memory) const;
  void* add(std::size_t bytes, MemorySpace space) noexcept;

  mutable std::mutex lock;    // of what follows
  std::vector<Range> ranges;  // ascending
  std::uint64_t liveDeviceBytes = 0;
};

// True if count elements at the address are device memory that its owner still holds.
template <typename T>
bool isDeviceArray(const T* elements, std::uint64_t count) {
  return count <= SIZE_MAX / sizeof(T) &&
         Allocations::instance().isDeviceRange(elements, count * sizeof(T));
}

}  // namespace zel
