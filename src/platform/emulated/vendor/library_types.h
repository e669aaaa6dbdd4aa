// Element types that the vendor's libraries share.
#pragma once

enum cudaDataType_t : int { CUDA_R_64F = 1 };
using cudaDataType = cudaDataType_t;
