// Starting a kernel on the device in software.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <type_traits>

#include "platform/emulated/execution/launch.h"

namespace zel_platform {

template <typename... Parameters>
cudaError_t launchKernel(void (*kernel)(Parameters...), const dim3& grid, const dim3& block,
                         std::size_t sharedBytes, std::type_identity_t<Parameters>... arguments) {
  return zel::device::launch(grid, block, sharedBytes, [=] { kernel(arguments...); });
}

}  // namespace zel_platform
