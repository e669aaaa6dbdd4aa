// The linker leads the runtime's two allocators here.
#include <cuda_runtime.h>

#include <cstddef>

#include "support/allocation_fault.h"

extern "C" {

cudaError_t __real_cudaMalloc(void** memory, std::size_t bytes);
cudaError_t __real_cudaHostAlloc(void** memory, std::size_t bytes, unsigned flags);

cudaError_t __wrap_cudaMalloc(void** memory, std::size_t bytes) {
  return zeltest::AllocationFault::strikes() ? cudaErrorMemoryAllocation
                                             : __real_cudaMalloc(memory, bytes);
}

cudaError_t __wrap_cudaHostAlloc(void** memory, std::size_t bytes, unsigned flags) {
  return zeltest::AllocationFault::strikes() ? cudaErrorMemoryAllocation
                                             : __real_cudaHostAlloc(memory, bytes, flags);
}
}
