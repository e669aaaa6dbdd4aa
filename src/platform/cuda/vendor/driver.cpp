// The driver's library is not linked, as machines without a driver lack it: its one function that
// the engine calls is taken from the runtime, which looks for the library when it is first used.
#include <cuda.h>
#include <cuda_runtime.h>

#include <cstddef>

CUresult cuMemGetInfo_v2(std::size_t* free, std::size_t* total) {
  constexpr unsigned versionOfSecondForm = 3020;
  void* entry = nullptr;
  cudaDriverEntryPointQueryResult found{};
  const cudaError_t result = cudaGetDriverEntryPointByVersion(
      "cuMemGetInfo", &entry, versionOfSecondForm, cudaEnableDefault, &found);
  if (result != cudaSuccess || entry == nullptr) return CUDA_ERROR_NOT_INITIALIZED;
  return reinterpret_cast<decltype(&cuMemGetInfo_v2)>(entry)(free, total);
}
