#include "platform/emulated/runtime/allocations.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "platform/emulated/runtime/device_setup.h"
#include "platform/emulated/runtime/guard.h"

namespace zel {
namespace {

constexpr std::size_t alignment = 64;

// The memory between two guards.
unsigned char* guardedMemory(std::size_t bytes) {
  void* memory = nullptr;
  if (::posix_memalign(&memory, alignment, bytes + 2 * guardBytes) != 0) return nullptr;
  auto* const begin = static_cast<unsigned char*>(memory) + guardBytes;
  fillGuard(begin - guardBytes);
  fillGuard(begin + bytes);
  return begin;
}

void freeGuarded(void* memory) { std::free(static_cast<unsigned char*>(memory) - guardBytes); }

}  // namespace

Allocations& Allocations::instance() {
  // Never destroyed: static objects may release memory after it would have been.
  static auto* const allocations = new Allocations;
  return *allocations;
}

void* Allocations::allocate(std::size_t bytes, MemorySpace space) noexcept {
  const std::scoped_lock locked(lock);
  const std::uint64_t most = currentDevice().memoryBytes;
  if (bytes > most || (space == MemorySpace::device && liveDeviceBytes > most - bytes))
    return nullptr;
  return add(bytes, space);
}

void* Allocations::add(std::size_t bytes, MemorySpace space) noexcept {
  unsigned char* const memory = guardedMemory(bytes);
  if (memory == nullptr) return nullptr;
  poison(memory, bytes, static_cast<unsigned>(ranges.size()));
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const auto place = std::upper_bound(
      ranges.begin(), ranges.end(), begin,
      [](std::uintptr_t address, const Range& range) { return address < range.begin; });
  try {
    ranges.insert(place, {begin, begin + bytes, space});
  } catch (const std::bad_alloc&) {
    freeGuarded(memory);
    return nullptr;
  }
  if (space == MemorySpace::device) liveDeviceBytes += bytes;
  return memory;
}

bool Allocations::release(void* memory, MemorySpace space) noexcept {
  const std::scoped_lock locked(lock);
  const Range* const range = find(memory);
  if (range == nullptr || range->begin != reinterpret_cast<std::uintptr_t>(memory) ||
      range->space != space)
    return false;
  if (space == MemorySpace::device) liveDeviceBytes -= range->end - range->begin;
  ranges.erase(ranges.begin() + (range - ranges.data()));
  freeGuarded(memory);
  return true;
}

const Allocations::Range* Allocations::find(const void* memory) const {
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const auto after =
      std::upper_bound(ranges.begin(), ranges.end(), address,
                       [](std::uintptr_t key, const Range& range) { return key < range.begin; });
  if (after == ranges.begin() || address >= (after - 1)->end) return nullptr;
  return &*(after - 1);
}

bool Allocations::isDeviceAddress(const void* memory) const {
  const std::scoped_lock locked(lock);
  const Range* const range = find(memory);
  return range != nullptr && range->space == MemorySpace::device;
}

bool Allocations::isDeviceRange(const void* memory, std::size_t bytes) const {
  if (bytes == 0) return true;
  const std::scoped_lock locked(lock);
  const Range* const range = find(memory);
  return range != nullptr && range->space == MemorySpace::device &&
         bytes <= range->end - reinterpret_cast<std::uintptr_t>(memory);
}

bool Allocations::guardsHold() {
  const std::scoped_lock locked(lock);
  bool hold = true;
  for (const Range& range : ranges)
    for (const std::uintptr_t zone : {range.begin - guardBytes, range.end}) {
      auto* const guard = reinterpret_cast<void*>(zone);
      if (isGuardIntact(guard)) continue;
      hold = false;
      fillGuard(guard);
    }
  return hold;
}

std::uint64_t Allocations::deviceBytes() const {
  const std::scoped_lock locked(lock);
  return liveDeviceBytes;
}

}  // namespace zel
