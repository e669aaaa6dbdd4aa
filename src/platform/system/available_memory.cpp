#include "platform/system/available_memory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <mutex>

#include "platform/system/control_group.h"
#include "platform/system/small_file.h"

namespace zel {
namespace {

std::uint64_t pages(int name) {
  return static_cast<std::uint64_t>(std::max(0L, ::sysconf(name))) *
         static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

MemoryLimit addressSpace() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return {};
  const std::uint64_t mappedPages = SmallFile("/proc/self/statm").numberAfter("").value_or(0);
  const std::uint64_t mapped = mappedPages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  return {limit.rlim_cur, limit.rlim_cur - std::min<std::uint64_t>(mapped, limit.rlim_cur)};
}

// What the system and the control group have left.
std::uint64_t readPhysicalMemory() {
  const auto kibibytes = SmallFile("/proc/meminfo").numberAfter("MemAvailable:");
  const std::uint64_t system = kibibytes ? *kibibytes * 1024 : pages(_SC_AVPHYS_PAGES);
  return std::min(system, controlGroupMemory().free);
}

// Reading the system's files takes as long as training a small problem does, and there may be
// hundreds of those, so an answer serves for 20 ms.
std::uint64_t physicalMemory() {
  using Clock = std::chrono::steady_clock;
  static std::mutex lock;
  static Clock::time_point readAt{};
  static std::uint64_t free = 0;
  const std::scoped_lock locked(lock);
  const Clock::time_point now = Clock::now();
  if (readAt == Clock::time_point{} || now - readAt > std::chrono::milliseconds(20)) {
    free = readPhysicalMemory();
    readAt = now;
  }
  return free;
}

}  // namespace

std::uint64_t availableHostMemory(std::uint64_t promised) {
  const std::uint64_t physical = physicalMemory();
  return std::min(physical - std::min(promised, physical), addressSpace().free);
}

std::uint64_t freeAddressSpace() { return addressSpace().free; }

std::uint64_t totalHostMemory() {
  static const std::uint64_t physical = std::min(pages(_SC_PHYS_PAGES), controlGroupMemory().total);
  return std::min(physical, addressSpace().total);
}

}  // namespace zel
