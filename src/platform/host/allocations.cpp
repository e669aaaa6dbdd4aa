#include "platform/host/allocations.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <new>
#include <string_view>

#include "platform/host/fault_injection.h"
#include "platform/system/available_memory.h"
#include "platform/system/large_pages.h"
#include "platform/system/small_file.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

constexpr std::size_t alignment = 64;
constexpr std::size_t hugePage = std::size_t{2} << 20;
// Below this size the system is not asked what it has left.
constexpr std::size_t unquestionedBytes = std::size_t{64} << 20;

// Second of the page counts in a line.
std::uint64_t residentBytes() {
  const SmallFile counts("/proc/self/statm");
  std::string_view text = counts.text();
  text.remove_prefix(std::min(text.find(' ') + 1, text.size()));
  std::uint64_t pages = 0;
  std::from_chars(text.data(), text.data() + text.size(), pages);
  return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void* alignedMemory(std::size_t bytes) {
  void* memory = nullptr;
  const std::size_t boundary = bytes < 2 * hugePage ? alignment : hugePage;
  if (::posix_memalign(&memory, boundary, bytes) != 0) return nullptr;
  preferLargePages(memory, bytes);
  return memory;
}

}  // namespace

Allocations& Allocations::instance() {
  // Never destroyed: static objects may release memory after it would have been.
  static auto* const allocations = new Allocations;
  return *allocations;
}

void* Allocations::allocate(std::size_t bytes, MemorySpace space) noexcept {
  {
    const std::scoped_lock locked(lock);
    if (AllocationFault::strikes()) return nullptr;
  }
  if (bytes > unquestionedBytes && bytes > obtainableBytes()) return nullptr;
  void* const memory = alignedMemory(bytes);
  if (memory == nullptr) return nullptr;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::scoped_lock locked(lock);
  const auto place = std::upper_bound(
      ranges.begin(), ranges.end(), begin,
      [](std::uintptr_t address, const Range& range) { return address < range.begin; });
  try {
    ranges.insert(place, {begin, begin + bytes, space});
  } catch (const std::bad_alloc&) {
    std::free(memory);
    return nullptr;
  }
  liveBytes += bytes;
  return memory;
}

bool Allocations::release(void* memory, MemorySpace space) noexcept {
  {
    const std::scoped_lock locked(lock);
    const Range* const range = find(memory);
    if (range == nullptr || range->begin != reinterpret_cast<std::uintptr_t>(memory) ||
        range->space != space)
      return false;
    liveBytes -= range->end - range->begin;
    ranges.erase(ranges.begin() + (range - ranges.data()));
  }
  std::free(memory);
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

std::uint64_t Allocations::obtainableBytes() const {
  const std::uint64_t resident = residentBytes();
  const std::scoped_lock locked(lock);
  return availableHostMemory(liveBytes - std::min(liveBytes, resident));
}

}  // namespace zel::inline ZEL_PLATFORM
