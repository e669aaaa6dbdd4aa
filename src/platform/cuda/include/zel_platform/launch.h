// Starting a kernel on this platform, and reaching device symbols from sources that the host
// compiler alone sees.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <type_traits>

// Storage of a variable that kernels write.
#define ZEL_DEVICE_VARIABLE __device__

namespace zel_platform {

template <typename... Parameters>
cudaError_t launchKernel(void (*kernel)(Parameters...), const dim3& grid, const dim3& block,
                         std::size_t sharedBytes, std::type_identity_t<Parameters>... arguments) {
  void* pointers[] = {&arguments...};
  return cudaLaunchKernel(reinterpret_cast<const void*>(kernel), grid, block, pointers, sharedBytes,
                          nullptr);
}

}  // namespace zel_platform

#ifndef __CUDACC__
// The vendor declares this form for its own compiler only.
template <typename T>
cudaError_t cudaMemcpyToSymbol(const T& symbol, const void* from, std::size_t bytes,
                               std::size_t offset = 0,
                               cudaMemcpyKind kind = cudaMemcpyHostToDevice) {
  return cudaMemcpyToSymbol(static_cast<const void*>(&symbol), from, bytes, offset, kind);
}
#endif
