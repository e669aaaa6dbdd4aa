// The kernel matrix of a working set.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"
#include "platform/host/rows/kernel_rows.h"
#include "platform/host/sets/set_sweeps.h"
#include "platform/set_machine.h"

namespace zelsvm {

// Symmetric, in single precision or in full. Rows lie pitch() elements behind each other, a multiple
// of setLanes, and end in zeros.
class SetMatrix {
 public:
  void make(const zelmag::AbstractMatrix<double>& samples, const HostKernel& kernel,
            std::span<const unsigned> chosen, SetPrecision precision);
  // SetMachine::addSetRows.
  void addRows(std::span<const double> weights, std::span<double> sums) const;

  [[nodiscard]] bool isSingle() const { return single; }
  [[nodiscard]] std::uint64_t size() const { return count; }
  [[nodiscard]] std::uint64_t pitch() const { return rowPitch; }
  [[nodiscard]] const float* singleRow(std::uint64_t r) const {
    return singles.data() + r * rowPitch;
  }
  [[nodiscard]] const double* fullRow(std::uint64_t r) const {
    return doubles.data() + r * rowPitch;
  }
  [[nodiscard]] double diagonal(std::uint64_t r) const {
    return single ? static_cast<double>(singleRow(r)[r]) : fullRow(r)[r];
  }

 private:
  bool single = true;
  std::uint64_t count = 0;
  std::uint64_t rowPitch = 0;
  HostVector<float> singles;
  HostVector<double> doubles;
  HostVector<double> batch;
  KernelRows rows;
};

}  // namespace zelsvm
