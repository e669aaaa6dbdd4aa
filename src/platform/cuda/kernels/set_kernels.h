// The two-variable method within a working set, in one launch.
#pragma once

#include <cuda_runtime.h>

#include "platform/set_variables.h"

namespace zelsvm {

// An array on the device, as std::span is one on the host.
template <typename T>
struct DeviceSpan {
  T* values;
  std::uint64_t length;

  ZEL_RULE T& operator[](std::uint64_t k) const { return values[k]; }
  [[nodiscard]] ZEL_RULE std::uint64_t size() const { return length; }
};

using DeviceSetVariables = SetVariablesIn<DeviceSpan>;

// The set's matrix and what the method keeps of each of its samples. Where there are two groups the
// offsets of the second lie behind those of the first.
struct SetArrays {
  const double* matrix;
  unsigned long long pitch;  // of its rows
  double* sums;
  double* diagonal;
  double* rises;  // offsets of the variables that may rise
  double* falls;  // and of those that may fall
};

struct SetOutcome {
  unsigned long long steps;
  unsigned long long isDone;
};

inline constexpr unsigned mostSetThreads = 512;

// One block of a power of two of threads, at most mostSetThreads. At most so many steps, until the
// gap of each group is within the tolerance or no step changes anything; sums and multipliers
// follow. groups is that of the variables. Of equal candidates the sample of the lowest number is
// taken.
template <unsigned groups>
__global__ void solveSetKernel(SetArrays set, DeviceSetVariables variables, double tolerance,
                               unsigned long long mostSteps, SetOutcome* outcome);

}  // namespace zelsvm
