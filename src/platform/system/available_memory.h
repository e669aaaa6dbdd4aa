// What the machine that the process runs on has left.
#pragma once

#include <cstdint>

namespace zel::inline ZEL_PLATFORM {

// Bytes that the process could still get: the smallest of the system's available memory, the
// control group's headroom and the address space limit's headroom.
std::uint64_t availableHostMemory();

// Bytes there are at all under the same limits.
std::uint64_t totalHostMemory();

}  // namespace zel::inline ZEL_PLATFORM
