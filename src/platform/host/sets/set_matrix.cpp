#include "platform/host/sets/set_matrix.h"

#include <algorithm>

#include "platform/host/sets/set_sweeps.h"

namespace zelsvm {

void SetMatrix::make(const SetTask& task, std::span<const unsigned> chosen,
                     SetPrecision precision) {
  numbers.assign(chosen.begin(), chosen.end());
  // An odd number of cache lines: rows at powers of two would push each other out.
  rowPitch = (size() / setLanes | 1) * setLanes;
  if (rowPitch < size()) rowPitch += 2 * setLanes;
  single = precision == SetPrecision::single;
  single ? fill(task, singleBlock, singles) : fill(task, fullBlock, doubles);
}

template <typename T>
void SetMatrix::fill(const SetTask& task, KernelBlock<T>& block, HostVector<T>& values) {
  values.resize(size() * rowPitch);
  block.assign(SampleChoice(*task.samples, numbers), task.kernel);
  block.computeAll(values.data(), rowPitch);
  for (std::uint64_t r = 0; r < size(); ++r)
    std::fill(values.data() + r * rowPitch + size(), values.data() + (r + 1) * rowPitch, T{});
}

void SetMatrix::addRows(std::span<const double> weights, std::span<double> sums) const {
  for (std::uint64_t c = 0; c < size(); ++c) {
    if (weights[c] == 0) continue;
    for (std::uint64_t r = 0; r < size(); ++r) sums[r] += weights[c] * value(c, r);
  }
}

}  // namespace zelsvm
