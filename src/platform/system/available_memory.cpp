#include "platform/system/available_memory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "platform/system/control_group.h"
#include "platform/system/small_file.h"

namespace zel::inline ZEL_PLATFORM {
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

}  // namespace

std::uint64_t availableHostMemory(std::uint64_t promised) {
  const auto kibibytes = SmallFile("/proc/meminfo").numberAfter("MemAvailable:");
  const std::uint64_t system = kibibytes ? *kibibytes * 1024 : pages(_SC_AVPHYS_PAGES);
  const std::uint64_t physical = std::min(system, controlGroupMemory().free);
  return std::min(physical - std::min(promised, physical), addressSpace().free);
}

std::uint64_t totalHostMemory() {
  return std::min({pages(_SC_PHYS_PAGES), controlGroupMemory().total, addressSpace().total});
}

}  // namespace zel::inline ZEL_PLATFORM
