#include <cuda.h>
#include <cuda_runtime.h>
#include <sys/utsname.h>

#include <cstdio>
#include <string>

#include "platform/host/allocations.h"
#include "platform/host/error_state.h"
#include "platform/host/parallel.h"
#include "platform/system/available_memory.h"
#include "platform/system/small_file.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

std::string processorName() {
  const SmallFile processors("/proc/cpuinfo");
  if (auto line = processors.lineAfter("model name"); line && line->find(": ") != std::string::npos)
    return std::string(line->substr(line->find(": ") + 2));
  utsname system{};
  return ::uname(&system) == 0 ? system.machine : "processor";
}

cudaError_t properties(cudaDeviceProp* device) {
  *device = {};
  const int threads = threadCount();
  std::snprintf(device->name, sizeof device->name, "%.200s with %d %s in place of a",
                processorName().c_str(), threads, threads == 1 ? "thread" : "threads");
  device->totalGlobalMem = totalHostMemory();
  device->major = 8;
  device->minor = 0;
  device->multiProcessorCount = threads;
  return cudaSuccess;
}

}  // namespace
}  // namespace zel::inline ZEL_PLATFORM

cudaError_t cudaDeviceSynchronize() { return cudaSuccess; }

cudaError_t cudaGetDeviceCount(int* count) {
  if (count == nullptr) return zel::recordError(cudaErrorInvalidValue);
  *count = 1;
  return cudaSuccess;
}

cudaError_t cudaSetDevice(int device) {
  return zel::recordError(device == 0 ? cudaSuccess : cudaErrorInvalidDevice);
}

cudaError_t cudaGetDevice(int* device) {
  if (device == nullptr) return zel::recordError(cudaErrorInvalidValue);
  *device = 0;
  return cudaSuccess;
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device) {
  if (properties == nullptr) return zel::recordError(cudaErrorInvalidValue);
  if (device != 0) return zel::recordError(cudaErrorInvalidDevice);
  return zel::properties(properties);
}

cudaError_t cudaOccupancyMaxActiveBlocksPerMultiprocessorWithFlags(int* blocks, const void* kernel,
                                                                   int blockSize, std::size_t,
                                                                   unsigned) {
  if (blocks == nullptr || kernel == nullptr || blockSize <= 0)
    return zel::recordError(cudaErrorInvalidValue);
  *blocks = 1;
  return cudaSuccess;
}

CUresult cuMemGetInfo_v2(std::size_t* free, std::size_t* total) {
  if (free == nullptr || total == nullptr) return CUDA_ERROR_INVALID_VALUE;
  *free = zel::Allocations::instance().obtainableBytes();
  *total = zel::totalHostMemory();
  return CUDA_SUCCESS;
}
