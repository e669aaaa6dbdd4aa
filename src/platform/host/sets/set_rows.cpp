#include "platform/host/sets/set_rows.h"

#include <algorithm>

#include "base/memory.h"
#include "platform/host/block/block_sweeps.h"
#include "platform/row_slots.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Columns whose sums stay in the first-level cache while rows are added to them.
constexpr std::uint64_t columnGrain = 1024;
constexpr double nanosecondsPerEntry = 0.2;
// Values that cost less are made faster than they are written to fresh memory and read again.
constexpr double leastKeptNanoseconds = 2.5;

}  // namespace

template <typename T>
void SetRows<T>::assign(const SetTask& task) {
  samples = task.samples;
  const std::uint64_t n = samples->rows();
  pitch = zel::roundedCapacity(n);
  const std::uint64_t obtainable = zel::obtainableMemory() + cache.capacity() * sizeof(T);
  block.assign(SampleChoice(*samples), task.kernel);
  const std::uint64_t slots =
      block.nanosecondsPerValue() < leastKeptNanoseconds
          ? 0
          : rowSlotCount(n, pitch * sizeof(T),
                         rowCacheBytes(task.cacheMegabytes, obtainable, task.cacheSharers));
  keeper.assign(n, slots);
  cache.resize(slots * pitch);
  scratch.resize(mixed * pitch);
  work.resize(pitch);
  asked.assign(n, false);
  madeCount = 0;
  askedCount = 0;
}

template <typename T>
void SetRows<T>::add(std::span<const WeightedRow> rows, std::span<double> sums) {
  ordered.assign(rows.begin(), rows.end());
  const auto known = std::stable_partition(
      ordered.begin(), ordered.end(), [&](const WeightedRow& row) { return !asked[row.sample]; });
  keeper.beginRound();
  askedCount += rows.size();
  std::fill_n(work.data(), sums.size(), T{0});
  addNew({ordered.begin(), known});
  for (std::span<const WeightedRow> rest(known, ordered.end()); !rest.empty();) {
    const std::span<const WeightedRow> some = rest.first(std::min(mixed, rest.size()));
    const bool isCached = std::any_of(some.begin(), some.end(), [&](const WeightedRow& row) {
      return keeper.find(row.sample, row.keep) != RowKeeper::noSlot;
    });
    isCached ? addMixed(some) : addNew(some);
    rest = rest.subspan(some.size());
  }
  std::transform(sums.begin(), sums.end(), work.data(), sums.begin(),
                 [](double sum, T added) { return sum + static_cast<double>(added); });
}

template <typename T>
void SetRows<T>::addNew(std::span<const WeightedRow> rows) {
  numbers.clear();
  weights.clear();
  targets.clear();
  for (const WeightedRow& row : rows) {
    asked[row.sample] = true;
    const std::uint32_t place = row.keep ? keeper.grab(row.sample) : RowKeeper::noSlot;
    numbers.push_back(row.sample);
    weights.push_back(static_cast<T>(row.weight));
    targets.push_back(place == RowKeeper::noSlot ? nullptr : slot(place));
  }
  T* const sums[] = {work.data()};
  make({.stored = targets, .weights = weights, .sums = sums});
}

template <typename T>
void SetRows<T>::addMixed(std::span<const WeightedRow> rows) {
  const T* values[mixed] = {};
  numbers.clear();
  weights.clear();
  targets.clear();
  for (std::size_t r = 0; r < rows.size(); ++r) {
    weights.push_back(static_cast<T>(rows[r].weight));
    std::uint32_t place = keeper.find(rows[r].sample, rows[r].keep);
    if (place != RowKeeper::noSlot) {
      values[r] = slot(place);
      continue;
    }
    if (rows[r].keep) place = keeper.grab(rows[r].sample);
    numbers.push_back(rows[r].sample);
    targets.push_back(place != RowKeeper::noSlot ? slot(place) : scratch.data() + r * pitch);
    values[r] = targets.back();
  }
  const std::function<void(std::uint64_t, std::uint64_t)> addAll = [&](std::uint64_t begin,
                                                                       std::uint64_t end) {
    blockSweeps<T>().addRows(values, weights.data(), rows.size(), begin, end, work.data());
  };
  if (numbers.empty())
    return zel::forEachChunk(samples->rows(), columnGrain,
                             nanosecondsPerEntry * static_cast<double>(rows.size()), addAll);
  make({.stored = targets, .then = &addAll});
}

template <typename T>
void SetRows<T>::make(const BlockUse<T>& use) {
  if (numbers.empty()) return;
  block.compute(SampleChoice(*samples, numbers), use);
  madeCount += numbers.size();
}

template class SetRows<double>;
template class SetRows<float>;

}  // namespace zelsvm
