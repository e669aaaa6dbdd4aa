#include "platform/host/sets/set_rows.h"

#include <algorithm>

#include "base/memory.h"
#include "platform/row_slots.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Columns that stay in the first-level cache while the rows of a batch are added to them.
constexpr std::uint64_t columnGrain = 1024;
constexpr double nanosecondsPerEntry = 0.3;

}  // namespace

void SetRows::assign(const SetTask& task, const HostKernel& kernel) {
  const std::uint64_t n = task.samples->rows();
  pitch = zel::roundedCapacity(n);
  const std::uint64_t obtainable = zel::obtainableMemory() + cache.capacity() * sizeof(double);
  const std::uint64_t slots = rowSlotCount(
      n, pitch * sizeof(double), rowCacheBytes(task.cacheMegabytes, obtainable, task.cacheSharers));
  keeper.assign(n, slots);
  cache.resize(slots * pitch);
  scratch.resize(mostTogether * pitch);
  asked.assign(n, false);
  kernelRows.assign(*task.samples, kernel);
  madeCount = 0;
  askedCount = 0;
}

void SetRows::add(std::span<const WeightedRow> rows, std::span<double> sums) {
  ordered.assign(rows.begin(), rows.end());
  std::stable_partition(ordered.begin(), ordered.end(),
                        [&](const WeightedRow& row) { return !asked[row.sample]; });
  keeper.beginRound();
  askedCount += rows.size();
  const std::span<const WeightedRow> all = ordered;
  for (std::uint64_t first = 0; first < all.size(); first += mostTogether)
    addBatch(all.subspan(first, std::min(mostTogether, all.size() - first)), sums);
}

// A row is worth its memory, whose first touch costs more than the row, when it is asked for again.
void SetRows::addBatch(std::span<const WeightedRow> rows, std::span<double> sums) {
  const double* values[mostTogether] = {};
  targets.clear();
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const WeightedRow& row = rows[r];
    std::uint32_t place = keeper.find(row.sample, row.keep);
    if (place != RowKeeper::noSlot) {
      values[r] = slot(place);
      continue;
    }
    if (row.keep && asked[row.sample]) place = keeper.grab(row.sample);
    double* const target =
        place != RowKeeper::noSlot ? slot(place) : scratch.data() + targets.size() * pitch;
    targets.push_back({row.sample, target});
    values[r] = target;
    asked[row.sample] = true;
  }
  if (!targets.empty()) kernelRows.compute(targets.data(), static_cast<unsigned>(targets.size()));
  madeCount += targets.size();
  zel::forEachChunk(sums.size(), columnGrain,
                    nanosecondsPerEntry * static_cast<double>(rows.size()),
                    [&](std::uint64_t begin, std::uint64_t end) {
                      for (std::size_t r = 0; r < rows.size(); ++r)
                        for (std::uint64_t s = begin; s < end; ++s)
                          sums[s] = fusedMultiplyAdd(rows[r].weight, values[r][s], sums[s]);
                    });
}

}  // namespace zelsvm
