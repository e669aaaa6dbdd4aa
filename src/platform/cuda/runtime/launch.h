// The one way to start a device kernel.
#pragma once

#include <cuda_runtime.h>
#include <zel_platform/launch.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <source_location>
#include <type_traits>

#include "platform/cuda/runtime/device.h"

namespace zel {

// Blocks of this kernel that the device holds at once. Throws RuntimeException where it holds none.
unsigned gridLimit(const void* kernel, unsigned blockSize, std::size_t sharedBytes,
                   const std::source_location& where);

template <typename... Parameters>
unsigned gridLimit(void (*kernel)(Parameters...), unsigned blockSize, std::size_t sharedBytes = 0,
                   const std::source_location& where = std::source_location::current()) {
  return gridLimit(reinterpret_cast<const void*>(kernel), blockSize, sharedBytes, where);
}

// Blocks for items of work: as many as needed, at most limit.
inline unsigned gridSize(unsigned limit, std::uint64_t items, unsigned blockSize) {
  return static_cast<unsigned>(std::min<std::uint64_t>(limit, (items + blockSize - 1) / blockSize));
}

struct LaunchShape {
  LaunchShape(const dim3& grid, unsigned blockSize, std::size_t sharedBytes = 0,
              const std::source_location& where = std::source_location::current())
      : grid(grid), block{blockSize}, sharedBytes(sharedBytes), where(where) {}
  LaunchShape(unsigned blocks, unsigned blockSize, std::size_t sharedBytes = 0,
              const std::source_location& where = std::source_location::current())
      : LaunchShape(dim3{blocks}, blockSize, sharedBytes, where) {}

  dim3 grid;
  dim3 block;
  std::size_t sharedBytes;
  std::source_location where;
};

// Queues the kernel on the default stream; an empty grid is no launch. Throws RuntimeException with
// the place of the shape when the launch fails.
template <typename... Parameters>
void launch(void (*kernel)(Parameters...), const LaunchShape& shape,
            std::type_identity_t<Parameters>... arguments) {
  if (shape.grid.x == 0 || shape.grid.y == 0) return;
  zelSafeCall(
      zel_platform::launchKernel(kernel, shape.grid, shape.block, shape.sharedBytes, arguments...),
      shape.where);
}

}  // namespace zel
