#include "platform/cuda/runtime/launch.h"

#include "base/errors.h"

namespace zel {

unsigned gridLimit(const void* kernel, unsigned blockSize, std::size_t sharedBytes,
                   const std::source_location& where) {
  const int blocks = residentBlocks(kernel, static_cast<int>(blockSize), sharedBytes, where);
  if (blocks <= 0)
    throw RuntimeException("The device has no room for a block of a kernel",
                           sourceName(where).c_str(), static_cast<int>(where.line()));
  return static_cast<unsigned>(blocks);
}

}  // namespace zel
