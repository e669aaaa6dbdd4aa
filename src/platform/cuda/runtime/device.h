// The device: checks of runtime and driver results, capability, free memory, launch limits.
#pragma once

#include <cuda.h>
#include <cuda_runtime.h>

#include <cstddef>
#include <cstdint>
#include <source_location>

namespace zel {

[[noreturn]] void throwCudaError(cudaError_t result, const std::source_location& where);
[[noreturn]] void throwDriverError(CUresult result, const std::source_location& where);

// Throws RuntimeException with the runtime's text and the place of the call unless result is 0.
inline void zelSafeCall(cudaError_t result,
                        const std::source_location& where = std::source_location::current()) {
  if (result != cudaSuccess) throwCudaError(result, where);
}

// The same for driver results; the text names the check's own place first, then the caller's.
inline void zelSafeDriverCall(CUresult result,
                              const std::source_location& where = std::source_location::current()) {
  if (result != CUDA_SUCCESS) throwDriverError(result, where);
}

// Throws AppException when the current device's capability is below 1.3.
void checkDoublePrecision();

// The same test on a capability: true from 1.3 on.
bool hasDoublePrecision(int major, int minor);

// Free device memory in bytes.
std::uint64_t freeDeviceMemory();

// Multiprocessors of the current device, read once.
int multiProcessorCount();

// Blocks of this kernel that the whole device holds at once.
int residentBlocks(const void* kernel, int blockSize, std::size_t sharedBytes,
                   const std::source_location& where = std::source_location::current());

}  // namespace zel
