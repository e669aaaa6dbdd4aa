#include "platform/cuda/kernels/sample_kernels.h"

namespace zelsvm {

__global__ void __launch_bounds__(128)
    gatherRowsKernel(double* rows, const double* matrix, const unsigned* numbers,
                     unsigned long long cols, unsigned long long count) {
  const unsigned stride = gridDim.x * blockDim.x;
  for (unsigned long long e = blockIdx.x * blockDim.x + threadIdx.x; e < cols * count; e += stride)
    rows[e] = __ldg(matrix + __ldg(numbers + e / cols) * cols + e % cols);
}

__global__ void __launch_bounds__(128)
    scatterRowsKernel(double* rows, const double* values, const int* columns, const int* offsets,
                      const unsigned* numbers, unsigned first, unsigned long long cols) {
  const unsigned sample = numbers == nullptr ? first + blockIdx.x : __ldg(numbers + blockIdx.x);
  double* const row = rows + blockIdx.x * cols;
  const int end = __ldg(offsets + sample + 1);
  for (int e = __ldg(offsets + sample) + static_cast<int>(threadIdx.x); e < end;
       e += static_cast<int>(blockDim.x))
    row[__ldg(columns + e)] = __ldg(values + e);
}

}  // namespace zelsvm
