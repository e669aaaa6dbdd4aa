// Device kernels of the SMO solvers. nu: the two label signs are searched separately, else all is
// the first group. unitDiagonal: K(x, x) is the constant 1. Of equal candidates the lower variable
// is taken.
#pragma once

#include <cuda_runtime.h>

#include "platform/cuda/kernels/search_records.h"
#include "platform/cuda/runtime/answer.h"
#include "rules/smo_records.h"

namespace zelsvm {

inline constexpr unsigned searchThreads = 256;

// What a pair's move adds to the gradient: steps times kernel rows.
struct GradientStep {
  const double* rowI;  // null for no step
  const double* rowJ;
  double stepI;
  double stepJ;
};

// The first index of a group, as it was selected.
struct FirstOfPair {
  const double* row;
  double up;
  unsigned index;
};

// The second index, noIndex for none, and what the pair's move added to the multipliers.
struct MovedPair {
  unsigned j;
  SmoDelta<double> delta;
};

// Blocks of 128 threads. Adds the columns first … first + count - 1 of the kernel matrix, held in Q
// with leading dimension ld, times their multipliers to the gradient of all l variables.
template <typename T>
__global__ void initSmoGradientKernel(T* G, const T* Q, unsigned ld, unsigned first, unsigned count,
                                      unsigned l);

// Blocks of a power of two of threads, at most searchThreads, with as many extremes in dynamic
// shared memory. Adds the step's
// effect to the gradient of all l variables, then answers with the extremes over the active ones.
// blocks has an entry per block.
template <bool nu>
__global__ void selectSmoWorkingSetKernel(Extremes<2>* blocks, zel::Ticketed<Extremes<2>>* answer,
                                          unsigned long long ticket, double* G, GradientStep step,
                                          unsigned l);

// Blocks of as many threads. Chooses the second index among the active variables by objective
// change and moves the pair's multipliers. second is the negative group's.
template <bool nu, bool unitDiagonal>
__global__ void findSmoDeltaKernel(Partner* blocks, zel::Ticketed<MovedPair>* answer,
                                   unsigned long long ticket, FirstOfPair first, FirstOfPair second,
                                   double* alpha, unsigned l);

// Blocks of 128 threads. Marks the active variables that lie at a bound beyond up or low with 1,
// all others with 0; up2 and low2 are the negative group's.
template <bool nu>
__global__ void reduceSmoWorkingSetKernel(signed char* marks, double up, double up2, double low,
                                          double low2, unsigned l);

}  // namespace zelsvm
