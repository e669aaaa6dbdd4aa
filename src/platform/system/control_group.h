// Limits that control groups put on this process.
#pragma once

#include <cstdint>
#include <limits>

namespace zel {

struct MemoryLimit {
  static constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t total = none;  // the tightest limit, bytes
  std::uint64_t free = none;   // the smallest distance between a limit and its group's use, bytes
};

// The process's group and all groups above it, of the memory controller's first or second version.
// File cache that the kernel would drop first does not count as used.
MemoryLimit controlGroupMemory(const char* membership = "/proc/self/cgroup",
                               const char* root = "/sys/fs/cgroup");

// Processors whose time the process may use, a fraction as the case may be; infinity for no limit.
double controlGroupProcessors(const char* membership = "/proc/self/cgroup",
                              const char* root = "/sys/fs/cgroup");

}  // namespace zel
