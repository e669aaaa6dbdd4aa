// Writing device symbols.
#pragma once

#include <cuda_runtime.h>
#include <zel_platform/launch.h>

#include <source_location>
#include <type_traits>

#include "platform/cuda/runtime/device.h"

namespace zel {

// Throws RuntimeException with the place of the call.
template <typename T>
void publishSymbol(const T& symbol, const std::type_identity_t<T>& value,
                   const std::source_location& where = std::source_location::current()) {
  zelSafeCall(cudaMemcpyToSymbol(symbol, &value, sizeof value), where);
}

}  // namespace zel
