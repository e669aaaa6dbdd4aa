#include "platform/host/rows/row_source.h"

#include <algorithm>
#include <vector>

#include "base/memory.h"
#include "rules/kernel_traits.h"

namespace zelsvm {
namespace {

// Rows of a start gradient between two signs of life.
constexpr std::uint64_t rowsAdded = 1024;

}  // namespace

void RowSource::assign(const SolverTask& task) {
  samples = task.samples;
  block.assign(SampleChoice(*samples), task.kernel);
  const std::uint64_t n = samples->rows();
  slotPitch = zel::roundedCapacity(n);
  const std::uint64_t obtainable = zel::obtainableMemory() + memory.capacity() * sizeof(double);
  slots.assign(n, rowSlotCount(n, slotPitch * sizeof(double),
                               rowCacheBytes(task.cacheMegabytes, obtainable, task.cacheSharers)));
  memory.resize(slots.count() * slotPitch);
  diagonalValues = nullptr;
  if (!hasUnitDiagonal(task.kernel.type)) {
    ownDiagonal.resize(slotPitch);
    block.computeDiagonal(ownDiagonal.data());
    diagonalValues = ownDiagonal.data();
  }
  requests = 0;
  misses = 0;
}

double RowSource::hitRate() const {
  return requests == 0 ? 0 : static_cast<double>(requests - misses) / static_cast<double>(requests);
}

const double* RowSource::row(std::uint64_t sample) {
  ++requests;
  if (const auto cached = slots.query(sample)) return slot(*cached);
  ++misses;
  double* const values[] = {slot(slots.grab(sample))};
  block.compute(SampleChoice(*samples, sample, 1), {.stored = values});
  return values[0];
}

void RowSource::addRows(std::span<const double> weights, double* sums,
                        const std::function<void()>& passed) {
  std::vector<std::uint64_t> weighted;
  std::vector<double> factors;
  for (std::uint64_t s = 0; s < weights.size(); ++s) {
    if (weights[s] == 0) continue;
    weighted.push_back(s);
    factors.push_back(weights[s]);
  }
  double* const targets[] = {sums};
  std::uint64_t reported = 0;
  for (std::uint64_t first = 0; first < weighted.size(); first += rowsAdded) {
    const std::uint64_t count = std::min(rowsAdded, weighted.size() - first);
    block.compute(SampleChoice(*samples, std::span(weighted).subspan(first, count)),
                  {{}, {factors.data() + first, count}, targets});
    const std::uint64_t seen = weighted[first + count - 1] + 1;
    for (; reported + slots.count() <= seen; reported += slots.count()) passed();
  }
  for (; reported < weights.size(); reported += slots.count()) passed();
}

}  // namespace zelsvm
