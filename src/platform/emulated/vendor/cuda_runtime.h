// The CUDA runtime as far as the engine calls it, for a device in software.
//
// "Device" memory is ordinary memory that cudaMalloc has handed out and that is kept on a list:
// copies, textures and products that name anything else are refused with the vendor's codes. Every
// call finishes before it returns. Device symbols are variables of the process, as on a device;
// each thread has a current device and a last error of its own.
#pragma once

#include <vector_types.h>

#include <cstddef>
#include <cstdint>

#include "platform/emulated/execution/device_code.h"

enum cudaError_t : int {
  cudaSuccess = 0,
  cudaErrorInvalidValue = 1,
  cudaErrorMemoryAllocation = 2,
  cudaErrorInvalidConfiguration = 9,
  cudaErrorInvalidMemcpyDirection = 21,
  cudaErrorNoDevice = 100,
  cudaErrorInvalidDevice = 101,
  cudaErrorNotReady = 600,
  cudaErrorIllegalAddress = 700,
  cudaErrorLaunchFailure = 719,
  cudaErrorUnknown = 999,
};

enum cudaMemcpyKind : int {
  cudaMemcpyHostToHost = 0,
  cudaMemcpyHostToDevice = 1,
  cudaMemcpyDeviceToHost = 2,
  cudaMemcpyDeviceToDevice = 3,
  cudaMemcpyDefault = 4,
};

struct cudaDeviceProp {
  char name[256];
  std::size_t totalGlobalMem;
  int major;
  int minor;
  int multiProcessorCount;
};

enum cudaResourceType : int { cudaResourceTypeLinear = 2 };
enum cudaChannelFormatKind : int { cudaChannelFormatKindSigned = 0 };

struct cudaChannelFormatDesc {
  int x, y, z, w;
  cudaChannelFormatKind f;
};

struct cudaResourceDesc {
  cudaResourceType resType;
  struct {
    struct {
      void* devPtr;
      cudaChannelFormatDesc desc;
      std::size_t sizeInBytes;
    } linear;
  } res;
};

struct cudaTextureDesc {
  int normalizedCoords;
};
struct cudaResourceViewDesc;

using cudaStream_t = struct CUstream_st*;

extern "C" {

const char* cudaGetErrorString(cudaError_t error);
cudaError_t cudaGetLastError();
cudaError_t cudaDeviceSynchronize();
cudaError_t cudaStreamQuery(cudaStream_t stream);

cudaError_t cudaGetDeviceCount(int* count);
cudaError_t cudaSetDevice(int device);
cudaError_t cudaGetDevice(int* device);
cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device);
cudaError_t cudaOccupancyMaxActiveBlocksPerMultiprocessorWithFlags(int* blocks, const void* kernel,
                                                                   int blockSize,
                                                                   std::size_t sharedBytes,
                                                                   unsigned flags);

// Memory is aligned to 64 bytes and full of values that nobody should read.
cudaError_t cudaMalloc(void** memory, std::size_t bytes);
cudaError_t cudaFree(void* memory);
cudaError_t cudaHostAlloc(void** memory, std::size_t bytes, unsigned flags);
cudaError_t cudaFreeHost(void* memory);
cudaError_t cudaMemcpy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind);
cudaError_t cudaMemset(void* memory, int value, std::size_t bytes);

cudaError_t cudaCreateTextureObject(cudaTextureObject_t* texture, const cudaResourceDesc* resource,
                                    const cudaTextureDesc* description,
                                    const cudaResourceViewDesc* view);
cudaError_t cudaDestroyTextureObject(cudaTextureObject_t texture);

}  // extern "C"

template <typename T>
cudaError_t cudaMalloc(T** memory, std::size_t bytes) {
  return cudaMalloc(reinterpret_cast<void**>(memory), bytes);
}

template <typename T>
cudaError_t cudaHostAlloc(T** memory, std::size_t bytes, unsigned flags) {
  return cudaHostAlloc(reinterpret_cast<void**>(memory), bytes, flags);
}

namespace zel {

cudaError_t copyToSymbol(void* symbol, std::size_t symbolBytes, const void* from, std::size_t bytes,
                         std::size_t offset, cudaMemcpyKind kind);

}  // namespace zel

template <typename T>
cudaError_t cudaMemcpyToSymbol(const T& symbol, const void* from, std::size_t bytes,
                               std::size_t offset = 0,
                               cudaMemcpyKind kind = cudaMemcpyHostToDevice) {
  return zel::copyToSymbol(const_cast<T*>(&symbol), sizeof(T), from, bytes, offset, kind);
}
