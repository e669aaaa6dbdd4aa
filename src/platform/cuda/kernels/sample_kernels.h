// Device kernels that lay chosen samples out as dense rows, one behind the other.
#pragma once

#include <cuda_runtime.h>

namespace zelsvm {

// Blocks of 128 threads. Row k becomes sample numbers[k] of a row-major matrix of so many columns.
__global__ void gatherRowsKernel(double* rows, const double* matrix, const unsigned* numbers,
                                 unsigned long long cols, unsigned long long count);

// A block of 128 threads per row; the rows are 0 before. The samples are compressed sparse rows
// with distinct columns, sample numbers[k] or, without numbers, sample first + k.
__global__ void scatterRowsKernel(double* rows, const double* values, const int* columns,
                                  const int* offsets, const unsigned* numbers, unsigned first,
                                  unsigned long long cols);

}  // namespace zelsvm
