// Starting a kernel on this platform: a plain call that sees the launch's shape.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <type_traits>

namespace zel_platform {

template <typename... Parameters>
cudaError_t launchKernel(void (*kernel)(Parameters...), const dim3& grid, const dim3& block,
                         std::size_t /*sharedBytes*/,
                         std::type_identity_t<Parameters>... arguments) {
  gridDim = grid;
  blockDim = block;
  kernel(arguments...);
  return cudaGetLastError();
}

}  // namespace zel_platform
