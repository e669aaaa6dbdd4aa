// The CUDA runtime as far as the engine calls it, on the processor.
//
// One device, index 0. "Device" memory is ordinary memory that cudaMalloc has handed out and that
// is kept on a list: copies and textures that name anything else are refused with
// cudaErrorInvalidValue, as a real device would. Every call finishes before it returns.
// Threads may call at the same time; each has device symbols and a last error of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#define __constant__ constinit thread_local
#define __device__
#define __global__
#define __host__
#define __forceinline__ inline __attribute__((always_inline))

enum cudaError_t : int {
  cudaSuccess = 0,
  cudaErrorInvalidValue = 1,
  cudaErrorMemoryAllocation = 2,
  cudaErrorInvalidConfiguration = 9,
  cudaErrorInvalidMemcpyDirection = 21,
  cudaErrorInvalidDevice = 101,
  cudaErrorInvalidResourceHandle = 400,
  cudaErrorUnknown = 999,
};

enum cudaMemcpyKind : int {
  cudaMemcpyHostToHost = 0,
  cudaMemcpyHostToDevice = 1,
  cudaMemcpyDeviceToHost = 2,
  cudaMemcpyDeviceToDevice = 3,
  cudaMemcpyDefault = 4,
};

struct char2 {
  signed char x, y;
};
struct double2 {
  double x, y;
};
struct dim3 {
  unsigned x = 1, y = 1, z = 1;
};

struct cudaDeviceProp {
  char name[256];
  std::size_t totalGlobalMem;
  int major;
  int minor;
  int multiProcessorCount;
};

using cudaTextureObject_t = unsigned long long;

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

const char* cudaGetErrorString(cudaError_t error);
cudaError_t cudaGetLastError();
cudaError_t cudaDeviceSynchronize();

cudaError_t cudaGetDeviceCount(int* count);
cudaError_t cudaSetDevice(int device);
cudaError_t cudaGetDevice(int* device);
cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device);
cudaError_t cudaOccupancyMaxActiveBlocksPerMultiprocessorWithFlags(int* blocks, const void* kernel,
                                                                   int blockSize,
                                                                   std::size_t sharedBytes,
                                                                   unsigned flags);

// Memory is aligned to 64 bytes and not cleared.
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

template <typename T>
cudaError_t cudaMalloc(T** memory, std::size_t bytes) {
  return cudaMalloc(reinterpret_cast<void**>(memory), bytes);
}

template <typename T>
cudaError_t cudaHostAlloc(T** memory, std::size_t bytes, unsigned flags) {
  return cudaHostAlloc(reinterpret_cast<void**>(memory), bytes, flags);
}

namespace zel::inline ZEL_PLATFORM {

cudaError_t copyToSymbol(void* symbol, std::size_t symbolBytes, const void* from, std::size_t bytes,
                         std::size_t offset, cudaMemcpyKind kind);

}  // namespace zel::inline ZEL_PLATFORM

// Device symbols are the calling thread's variables here.
template <typename T>
cudaError_t cudaMemcpyToSymbol(const T& symbol, const void* from, std::size_t bytes,
                               std::size_t offset = 0,
                               cudaMemcpyKind kind = cudaMemcpyHostToDevice) {
  return zel::copyToSymbol(const_cast<T*>(&symbol), sizeof(T), from, bytes, offset, kind);
}
