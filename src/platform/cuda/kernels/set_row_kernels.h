// Device kernels of the working-set method: kernel values from dot products, and sums over rows.
#pragma once

#include <cuda_runtime.h>

#include "rules/kernel_type.h"

namespace zelsvm {

// So many rows of a sum are added by one thread.
inline constexpr unsigned stripeRows = 16;

// A kernel row of all samples, and its factor in the sums.
struct AddedRow {
  double* values;  // dot products, or kernel values once made
  double* kept;    // where kernel values made now shall stay, or null
  double norm;     // squared norm of the row's sample
  double weight;
  bool isMade;
};

// Blocks of 128 threads, one row of blocks per stripe of the rows. partials[stripe * pitch + s] =
// sum of weight K(row, s) over the stripe, for all n samples; norms are their squared norms.
using AddRowsKernel = void (*)(double* partials, unsigned long long pitch, const AddedRow* rows,
                               unsigned rowCount, const double* norms, unsigned long long n);
AddRowsKernel addRowsKernelOf(SVM_KERNEL type);

// Blocks of 128 threads. sums[s] += the partial sums of all stripes, in their order.
__global__ void addPartialsKernel(double* sums, const double* partials, unsigned long long pitch,
                                  unsigned stripes, unsigned long long n);

// Blocks of 128 threads, a row of blocks per row. The dot products of a working set's samples with
// each other, rows pitch apart, become kernel values.
using SetMatrixKernel = void (*)(double* matrix, unsigned long long pitch, const double* norms,
                                 unsigned size);
SetMatrixKernel setMatrixKernelOf(SVM_KERNEL type);

}  // namespace zelsvm
