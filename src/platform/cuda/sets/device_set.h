// A working set on the device: its kernel matrix, and the two-variable method on it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/cuda/kernels/set_kernels.h"
#include "platform/cuda/machine/device_samples.h"
#include "platform/cuda/runtime/device_vector.h"
#include "platform/set_machine.h"

namespace zelsvm {

// In double precision throughout. The kernel function's parameters are those that the device's
// symbols have. Throws RuntimeException for device failures.
class DeviceSet {
 public:
  // Makes the kernel matrix of these samples.
  void choose(const SetTask& task, DeviceSamples& samples, std::span<const unsigned> chosen);
  // SetMachine::addSetRows.
  void addRows(zellas::BlasContext& blas, std::span<const double> weights, std::span<double> sums);
  // SetMachine::solveSet.
  SetSteps solve(const SetVariables& variables, std::span<double> sums, double tolerance,
                 std::uint64_t mostSteps);

 private:
  std::uint64_t size = 0;
  std::uint64_t pitch = 0;
  zel::DeviceVector<double> matrix;
  zel::DeviceVector<double> norms;
  zel::DeviceVector<double> offsets;  // and the diagonal
  // What travels together: the outcome, sums and multipliers both ways, the others there only.
  std::vector<double> packed;
  zel::DeviceVector<double> packedThere;
  zel::DeviceVector<signed char> signs;
};

}  // namespace zelsvm
