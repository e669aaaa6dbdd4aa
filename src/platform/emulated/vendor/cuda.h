// The CUDA driver as far as the engine calls it.
#pragma once

#include <cstddef>

enum CUresult : int { CUDA_SUCCESS = 0, CUDA_ERROR_INVALID_VALUE = 1 };

CUresult cuMemGetInfo_v2(std::size_t* free, std::size_t* total);
