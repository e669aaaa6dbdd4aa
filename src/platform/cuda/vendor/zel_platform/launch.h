// What differs between a device and the one in software: starting a kernel, dynamic shared memory,
// and device symbols in sources that the host compiler alone sees.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <type_traits>

// Within a kernel: the shared memory that the launch adds, as an array.
#define ZEL_DYNAMIC_SHARED(type, name) extern __shared__ type name[]

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
