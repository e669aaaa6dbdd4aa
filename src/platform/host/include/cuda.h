// The CUDA driver as far as the engine calls it, on the processor.
#pragma once

#include <cstddef>

enum CUresult : int { CUDA_SUCCESS = 0, CUDA_ERROR_INVALID_VALUE = 1 };

// Bytes that an allocation could really get now, and bytes there are: the smallest of the system's
// available memory, the control group's and the process's own limits.
CUresult cuMemGetInfo_v2(std::size_t* free, std::size_t* total);
