#include <utility>

#include "platform/emulated/runtime/error_state.h"

namespace zel {
namespace {

thread_local cudaError_t lastError = cudaSuccess;

}  // namespace

cudaError_t recordError(cudaError_t error) {
  if (error != cudaSuccess) lastError = error;
  return error;
}

}  // namespace zel

cudaError_t cudaGetLastError() { return std::exchange(zel::lastError, cudaSuccess); }

const char* cudaGetErrorString(cudaError_t error) {
  switch (error) {
    case cudaSuccess:
      return "no error";
    case cudaErrorInvalidValue:
      return "invalid argument";
    case cudaErrorMemoryAllocation:
      return "out of memory";
    case cudaErrorInvalidConfiguration:
      return "invalid configuration argument";
    case cudaErrorInvalidMemcpyDirection:
      return "invalid copy direction for memcpy";
    case cudaErrorNoDevice:
      return "no CUDA-capable device is detected";
    case cudaErrorInvalidDevice:
      return "invalid device ordinal";
    case cudaErrorNotReady:
      return "device not ready";
    case cudaErrorIllegalAddress:
      return "an illegal memory access was encountered";
    case cudaErrorLaunchFailure:
      return "unspecified launch failure";
    case cudaErrorUnknown:
      return "unknown error";
  }
  return "unrecognized error code";
}
