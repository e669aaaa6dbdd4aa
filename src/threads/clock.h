// The time that passes, for what is measured while it runs.
#pragma once

#include <chrono>
#include <cstdint>

namespace zel {

// Since some moment before the process began.
inline std::int64_t monotonicNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace zel
