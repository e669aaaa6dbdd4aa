// What a solver does to all variables in an iteration, in the portions that suit the platform: one
// launch each on a GPU, fused sweeps on the host.
#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>

#include "zeldplus/zelsvm/engine/row_forecast.h"
#include "zeldplus/zelsvm/engine/smo_records.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// The device arrays of a solve, which stay where they are while it lasts. diagonal holds K(x, x) by
// sample and is not read for the radial kernel, whose diagonal is 1.
template <typename T>
struct SmoVariables {
  std::uint64_t samples;
  unsigned count;  // samples, or twice as many
  T Cp;
  T Cn;
  T* gradient;
  T* alpha;
  char2* status;
  const unsigned* activeSet;
  SmoDelta<T>* delta;
  const T* diagonal;
};

// The core variant has one selection and ignores second and row2; in the nu variant these are the
// negative class's. The device context of the solve is published before begin. After begin only
// alpha, status and delta are kept up to date in their arrays. All of it throws
// RuntimeException for device failures.
template <typename T>
class SmoSteps : public RowForecast {
 public:
  // The gradient's array holds its start values.
  virtual void begin(const SmoVariables<T>& variables) = 0;
  // Adds kernel columns times multipliers: count columns, ld apart, of variables from first on.
  virtual void addColumns(const T* columns, std::uint64_t ld, unsigned first, unsigned count) = 0;
  // The first activeCount entries of the active set, ascending, are the variables to search now.
  virtual void activate(unsigned activeCount) = 0;
  // Index noIndex stands for none.
  virtual void select(SmoSelection<T>& selection, SmoSelection<T>& second) = 0;
  // Chooses the second index and moves the pair's multipliers; noIndex and no move for none.
  virtual unsigned findDelta(const SmoSelection<T>& selection, const SmoSelection<T>& second,
                             const T* row, const T* row2) = 0;
  // Adds the last move's effect to the gradient of all variables, shrunk ones included.
  virtual void updateGradient(const SmoPair<T>& pair) = 0;
  // Marks in status which active variables lie at a bound beyond the selection's extremes.
  virtual void reduce(const SmoSelection<T>& selection, const SmoSelection<T>& second) = 0;
  // Brings the gradient's array up to date.
  virtual void storeGradient() = 0;
};

template <typename T>
std::unique_ptr<SmoSteps<T>> makeSmoSteps(SVM_KERNEL kernelType, bool nu);

}  // namespace zelsvm::inline ZEL_PLATFORM
