// Starting a kernel on this platform: a plain call, whose loops make up for the launch's shape.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <type_traits>

// Storage of a variable that kernels write.
#define ZEL_DEVICE_VARIABLE constinit thread_local

namespace zel_platform {

template <typename... Parameters>
cudaError_t launchKernel(void (*kernel)(Parameters...), const dim3& /*grid*/, const dim3& /*block*/,
                         std::size_t /*sharedBytes*/,
                         std::type_identity_t<Parameters>... arguments) {
  kernel(arguments...);
  return cudaGetLastError();
}

}  // namespace zel_platform
