// Device kernels of the SMO solvers. nu: the two label signs are searched separately. unitDiagonal:
// K(x, x) is the constant 1. Ties go to the earlier position of the reduction order.
#pragma once

#include <cuda_runtime.h>

#include "rules/smo_records.h"

namespace zelsvm {

// Blocks of 128 threads. Adds the columns first … first + count - 1 of the kernel matrix, held in Q
// with leading dimension ld, times their multipliers to the gradient of all l variables.
template <typename T>
__global__ void initSmoGradientKernel(T* G, const T* Q, unsigned ld, unsigned first, unsigned count,
                                      unsigned l);

// Blocks of 32 threads with 512 bytes of dynamic shared memory (nu: 1024). Entry 0 of the results
// receives the extremes over the active set and the index of the maximum; the second pair of
// results is the negative class's and is used by the nu variant only.
template <typename T, bool nu>
__global__ void selectSmoWorkingSetKernel(SmoUpperBeta<T>* upper, unsigned* index,
                                          SmoUpperBeta<T>* upper2, unsigned* index2,
                                          const unsigned* activeSet, unsigned activeCount);

// Blocks of 32 threads with 512 bytes of dynamic shared memory. Chooses the second index by
// objective change (entry 0 of lower), moves the pair's multipliers and reports the step in delta.
// row2 and the second selection are the negative class's.
template <typename T, bool nu, bool unitDiagonal>
__global__ void findSmoDeltaKernel(SmoDelta<T>* delta, SmoLowerBeta<T>* lower,
                                   const SmoUpperBeta<T>* upper, const unsigned* index,
                                   const SmoUpperBeta<T>* upper2, const unsigned* index2,
                                   const T* row, const T* row2, T* alpha, const unsigned* activeSet,
                                   unsigned activeCount);

// Blocks of 128 threads. Adds the step's effect to the gradient of all l variables, shrunk ones
// included.
template <typename T>
__global__ void updateSmoGradientKernel(T* G, const SmoDelta<T>* delta, unsigned i, const T* rowI,
                                        unsigned j, const T* rowJ, unsigned l);

// Blocks of 128 threads. Sets the shrink mark of active variables that lie at a bound beyond up or
// low; up2 and low2 are the negative class's.
template <typename T, bool nu>
__global__ void reduceSmoWorkingSetKernel(char2* status, T up, T up2, T low, T low2,
                                          const unsigned* activeSet, unsigned activeCount);

}  // namespace zelsvm
