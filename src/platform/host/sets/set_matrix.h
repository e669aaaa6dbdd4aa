// The kernel matrix of a working set.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "platform/host/block/kernel_block.h"
#include "platform/set_machine.h"

namespace zelsvm {

// Symmetric, in single precision or in full. Rows lie pitch() elements behind each other, a
// multiple of setLanes, and end in zeros.
class SetMatrix {
 public:
  // Throws std::bad_alloc.
  void make(const SetTask& task, std::span<const unsigned> chosen, SetPrecision precision);
  // SetMachine::addSetRows.
  void addRows(std::span<const double> weights, std::span<double> sums) const;

  [[nodiscard]] bool isSingle() const { return single; }
  [[nodiscard]] std::uint64_t size() const { return numbers.size(); }
  [[nodiscard]] std::uint64_t pitch() const { return rowPitch; }
  [[nodiscard]] const float* singleRow(std::uint64_t r) const {
    return singles.data() + r * rowPitch;
  }
  [[nodiscard]] const double* fullRow(std::uint64_t r) const {
    return doubles.data() + r * rowPitch;
  }
  [[nodiscard]] double value(std::uint64_t r, std::uint64_t c) const {
    return single ? static_cast<double>(singleRow(r)[c]) : fullRow(r)[c];
  }

 private:
  template <typename T>
  void fill(const SetTask& task, KernelBlock<T>& block, HostVector<T>& values);

  bool single = true;
  std::uint64_t rowPitch = 0;
  std::vector<std::uint64_t> numbers;
  KernelBlock<float> singleBlock;
  KernelBlock<double> fullBlock;
  HostVector<float> singles;
  HostVector<double> doubles;
};

}  // namespace zelsvm
