// What the machine that the process runs on has left.
#pragma once

#include <cstdint>

namespace zel {

// Bytes that the process could still get: the smallest of the system's available memory, the
// control group's headroom and the address space limit's headroom. Promised bytes are memory that
// was handed out before and has not been touched yet, which the first two do not know about.
std::uint64_t availableHostMemory(std::uint64_t promised = 0);

// Bytes that the process may still map.
std::uint64_t freeAddressSpace();

// Bytes there are at all under the same limits.
std::uint64_t totalHostMemory();

}  // namespace zel
