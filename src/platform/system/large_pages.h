// Large pages for large arrays.
#pragma once

#include <cstddef>

namespace zel {

// Asks the system to back a fresh block of 4 MiB or more with large pages: first touches and sweeps
// get cheaper. A system that cannot leaves everything as it is.
void preferLargePages(void* memory, std::size_t bytes) noexcept;

}  // namespace zel
