// Zones beside an allocation that nobody may write, and contents that nobody should read.
#pragma once

#include <cstddef>

namespace zel {

inline constexpr std::size_t guardBytes = 1024;

// memory is guardBytes long.
void fillGuard(void* memory);
bool isGuardIntact(const void* memory);

// Fills memory with one of some patterns, which as numbers are NaN, huge, or huge and negative, and
// as indices out of any range.
void poison(void* memory, std::size_t bytes, unsigned pattern);

}  // namespace zel
