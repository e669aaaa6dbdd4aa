#include "platform/cuda/kernels/kernel_value.cuh"
#include "platform/cuda/kernels/set_row_kernels.h"

namespace zelsvm {
namespace {

__device__ __forceinline__ unsigned long long firstPosition() {
  return blockIdx.x * blockDim.x + threadIdx.x;
}

__device__ __forceinline__ unsigned positionStride() { return gridDim.x * blockDim.x; }

}  // namespace

template <SVM_KERNEL K>
__global__ void __launch_bounds__(128)
    addRowsKernel(double* partials, unsigned long long pitch, const AddedRow* rows,
                  unsigned rowCount, const double* norms, unsigned long long n) {
  const unsigned first = blockIdx.y * stripeRows;
  const unsigned end = rowCount - first < stripeRows ? rowCount : first + stripeRows;
  for (unsigned long long s = firstPosition(); s < n; s += positionStride()) {
    const double norm = __ldg(norms + s);
    double sum = 0;
#pragma unroll 4
    for (unsigned r = first; r < end; ++r) {
      const AddedRow& row = rows[r];
      double value = row.values[s];
      if (!row.isMade) {
        value = deviceKernelValue<K>(value, row.norm, norm);
        if (row.kept != nullptr) row.kept[s] = value;
      }
      sum = fusedMultiplyAdd(row.weight, value, sum);
    }
    partials[blockIdx.y * pitch + s] = sum;
  }
}

__global__ void __launch_bounds__(128)
    addPartialsKernel(double* sums, const double* partials, unsigned long long pitch,
                      unsigned stripes, unsigned long long n) {
  for (unsigned long long s = firstPosition(); s < n; s += positionStride()) {
    double sum = sums[s];
#pragma unroll 4
    for (unsigned p = 0; p < stripes; ++p) sum += __ldg(partials + p * pitch + s);
    sums[s] = sum;
  }
}

template <SVM_KERNEL K>
__global__ void __launch_bounds__(128)
    setMatrixKernel(double* matrix, unsigned long long pitch, const double* norms, unsigned size) {
  double* const row = matrix + blockIdx.y * pitch;
  const double norm = __ldg(norms + blockIdx.y);
  for (unsigned long long c = firstPosition(); c < size; c += positionStride())
    row[c] = deviceKernelValue<K>(row[c], norm, __ldg(norms + c));
}

namespace {

struct ChooseAddRows {
  template <typename Function>
  AddRowsKernel operator()() const {
    return addRowsKernel<typeOf(Function{})>;
  }
};

struct ChooseSetMatrix {
  template <typename Function>
  SetMatrixKernel operator()() const {
    return setMatrixKernel<typeOf(Function{})>;
  }
};

}  // namespace

AddRowsKernel addRowsKernelOf(SVM_KERNEL type) { return withKernel(type, ChooseAddRows{}); }

SetMatrixKernel setMatrixKernelOf(SVM_KERNEL type) { return withKernel(type, ChooseSetMatrix{}); }

}  // namespace zelsvm
