#include "platform/host/sets/set_matrix.h"

#include <algorithm>

#include "rules/kernel_rules.h"

namespace zelsvm {

void SetMatrix::make(const zelmag::AbstractMatrix<double>& samples, const HostKernel& kernel,
                     std::span<const unsigned> chosen, SetPrecision precision) {
  count = chosen.size();
  single = precision == SetPrecision::single;
  rowPitch = (count + setLanes - 1) / setLanes * setLanes;
  single ? singles.resize(count * rowPitch) : doubles.resize(count * rowPitch);
  zel::IndexList<> selection(count);
  for (std::uint64_t r = 0; r < count; ++r) selection[r] = chosen[r];
  const auto subset = samples.subset(selection);
  rows.assign(*subset, kernel);
  constexpr std::uint64_t together = 32;
  const std::uint64_t batchPitch = zel::roundedCapacity(count);
  batch.resize(together * batchPitch);
  std::vector<RowTarget> targets;
  for (std::uint64_t first = 0; first < count; first += together) {
    const std::uint64_t last = std::min(count, first + together);
    targets.clear();
    for (std::uint64_t r = first; r < last; ++r)
      targets.push_back({r, batch.data() + (r - first) * batchPitch});
    rows.compute(targets.data(), static_cast<unsigned>(targets.size()));
    for (std::uint64_t r = first; r < last; ++r)
      for (std::uint64_t c = 0; c < rowPitch; ++c) {
        const double value = c < count ? targets[r - first].values[c] : 0;
        if (single)
          singles.data()[r * rowPitch + c] = static_cast<float>(value);
        else
          doubles.data()[r * rowPitch + c] = value;
      }
  }
}

void SetMatrix::addRows(std::span<const double> weights, std::span<double> sums) const {
  for (std::uint64_t c = 0; c < count; ++c)
    if (weights[c] != 0)
      for (std::uint64_t r = 0; r < count; ++r)
        sums[r] = fusedMultiplyAdd(
            weights[c], single ? static_cast<double>(singleRow(c)[r]) : fullRow(c)[r], sums[r]);
}

}  // namespace zelsvm
