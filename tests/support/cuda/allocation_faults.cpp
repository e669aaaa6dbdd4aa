// The tests' allocation faults on the vendor's runtime: the linker leads its two allocators here.
#include <cuda_runtime.h>

#include <cstddef>

#include "platform/host/fault_injection.h"

extern "C" {

cudaError_t __real_cudaMalloc(void** memory, std::size_t bytes);
cudaError_t __real_cudaHostAlloc(void** memory, std::size_t bytes, unsigned flags);

cudaError_t __wrap_cudaMalloc(void** memory, std::size_t bytes) {
  return zel::AllocationFault::strikes() ? cudaErrorMemoryAllocation
                                         : __real_cudaMalloc(memory, bytes);
}

cudaError_t __wrap_cudaHostAlloc(void** memory, std::size_t bytes, unsigned flags) {
  return zel::AllocationFault::strikes() ? cudaErrorMemoryAllocation
                                         : __real_cudaHostAlloc(memory, bytes, flags);
}
}
