#include "base/memory.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <new>
#include <string_view>

#include "base/errors.h"
#include "platform/system/available_memory.h"
#include "platform/system/large_pages.h"
#include "platform/system/small_file.h"

namespace zel {
namespace {

constexpr std::size_t alignment = 64;
constexpr std::size_t largePage = std::size_t{2} << 20;
// Below this size the system is not asked what it has left.
constexpr std::uint64_t unquestionedBytes = std::uint64_t{64} << 20;

class OutOfMemory : public std::bad_alloc {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "Unable to allocate memory"; }
};

std::atomic<std::uint64_t> liveBytes = 0;

std::uint64_t byteCount(std::uint64_t count, std::size_t elementSize) {
  if (count > std::numeric_limits<std::uint64_t>::max() / 2 / elementSize) throwOutOfMemory();
  return count * elementSize;
}

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
  const std::size_t boundary = bytes < 2 * largePage ? alignment : largePage;
  if (::posix_memalign(&memory, boundary, bytes) != 0) throwOutOfMemory();
  preferLargePages(memory, bytes);
  return memory;
}

}  // namespace

void* allocateMemory(std::uint64_t count, std::size_t elementSize, MemoryKind kind) {
  if (count == 0) return nullptr;
  if (kind == MemoryKind::aligned) throw RuntimeException("Unable to allocate memory");
  requireHostMemory(count, elementSize);
  void* const memory = alignedMemory(count * elementSize);
  liveBytes += count * elementSize;
  return memory;
}

void freeMemory(void* memory, std::uint64_t count, std::size_t elementSize) noexcept {
  if (memory == nullptr) return;
  liveBytes -= count * elementSize;
  std::free(memory);
}

std::uint64_t obtainableMemory() {
  const std::uint64_t live = liveBytes;
  return availableHostMemory(live - std::min(live, residentBytes()));
}

void requireHostMemory(std::uint64_t count, std::size_t elementSize) {
  const std::uint64_t bytes = byteCount(count, elementSize);
  // The system promises more than it has, so a large request is checked before it is believed.
  if (bytes > unquestionedBytes && bytes > obtainableMemory()) throwOutOfMemory();
}

void throwOutOfMemory() { throw OutOfMemory{}; }

void throwWrappedResize() {
  throw RuntimeException("Error in attempts to reallocate wrapped memory.");
}

}  // namespace zel
