#include <cuda.h>
#include <cuda_runtime.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/emulated/execution/launch.h"
#include "platform/emulated/runtime/allocations.h"
#include "platform/emulated/runtime/device_setup.h"
#include "platform/emulated/runtime/error_state.h"

namespace zel {
namespace {

std::vector<DeviceTraits>& deviceList() {
  static std::vector<DeviceTraits> list(1);
  return list;
}

thread_local int currentIndex = 0;

bool exists(int device) {
  return device >= 0 && static_cast<std::size_t>(device) < devices().size();
}

cudaDeviceProp propertiesOf(const DeviceTraits& traits) {
  cudaDeviceProp properties{};
  std::snprintf(properties.name, sizeof properties.name, "Emulated");
  properties.totalGlobalMem = traits.memoryBytes;
  properties.major = traits.major;
  properties.minor = traits.minor;
  properties.multiProcessorCount = traits.multiprocessors;
  return properties;
}

}  // namespace

DeviceSetup::DeviceSetup(std::vector<DeviceTraits> devices) { deviceList() = std::move(devices); }

DeviceSetup::~DeviceSetup() { deviceList().assign(1, {}); }

const std::vector<DeviceTraits>& devices() { return deviceList(); }

const DeviceTraits& currentDevice() {
  static const DeviceTraits none{};
  return exists(currentIndex) ? devices()[static_cast<std::size_t>(currentIndex)] : none;
}

}  // namespace zel

cudaError_t cudaDeviceSynchronize() { return cudaSuccess; }
cudaError_t cudaStreamQuery(cudaStream_t) { return cudaSuccess; }

cudaError_t cudaGetDeviceCount(int* count) {
  if (count == nullptr) return zel::recordError(cudaErrorInvalidValue);
  *count = static_cast<int>(zel::devices().size());
  return zel::recordError(*count == 0 ? cudaErrorNoDevice : cudaSuccess);
}

cudaError_t cudaSetDevice(int device) {
  if (!zel::exists(device)) return zel::recordError(cudaErrorInvalidDevice);
  zel::currentIndex = device;
  return cudaSuccess;
}

cudaError_t cudaGetDevice(int* device) {
  if (device == nullptr) return zel::recordError(cudaErrorInvalidValue);
  *device = zel::currentIndex;
  return cudaSuccess;
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device) {
  if (properties == nullptr) return zel::recordError(cudaErrorInvalidValue);
  if (!zel::exists(device)) return zel::recordError(cudaErrorInvalidDevice);
  *properties = zel::propertiesOf(zel::devices()[static_cast<std::size_t>(device)]);
  return cudaSuccess;
}

cudaError_t cudaOccupancyMaxActiveBlocksPerMultiprocessorWithFlags(int* blocks, const void* kernel,
                                                                   int blockSize,
                                                                   std::size_t sharedBytes,
                                                                   unsigned) {
  if (blocks == nullptr || kernel == nullptr || blockSize <= 0)
    return zel::recordError(cudaErrorInvalidValue);
  const bool fits = static_cast<unsigned>(blockSize) <= zel::device::mostThreads &&
                    sharedBytes <= zel::device::mostShared;
  *blocks = fits ? zel::currentDevice().residentBlocks : 0;
  return cudaSuccess;
}

CUresult cuMemGetInfo_v2(std::size_t* free, std::size_t* total) {
  if (free == nullptr || total == nullptr) return CUDA_ERROR_INVALID_VALUE;
  *total = zel::currentDevice().memoryBytes;
  *free = *total - std::min<std::size_t>(*total, zel::Allocations::instance().deviceBytes());
  return CUDA_SUCCESS;
}
