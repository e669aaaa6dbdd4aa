#include "data/feature_numbers.h"

namespace zelmag {
namespace {

// A bit for each column.
FeatureNumbers markedFeatures(const int* columns, std::uint64_t entries, std::uint64_t count) {
  std::vector<bool> used(count);
  used[count - 1] = true;
  std::uint64_t inUse = 1;
  for (std::uint64_t k = 0; k < entries; ++k) {
    const auto column = static_cast<std::uint64_t>(columns[k]);
    if (used[column]) continue;
    used[column] = true;
    if (!fewInUse(count, ++inUse)) return count;
  }
  std::vector<std::uint32_t> numbers;
  numbers.reserve(inUse);
  for (std::uint64_t column = 0; column < count; ++column)
    if (used[column]) numbers.push_back(static_cast<std::uint32_t>(column));
  return {count, std::move(numbers)};
}

FeatureNumbers sortedFeatures(const int* columns, std::uint64_t entries, std::uint64_t count) {
  std::vector<std::uint32_t> numbers(columns, columns + entries);
  numbers.push_back(static_cast<std::uint32_t>(count - 1));
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return {count, std::move(numbers)};
}

}  // namespace

FeatureNumbers featuresInUse(const int* columns, std::uint64_t entries, std::uint64_t count) {
  if (!fewInUse(count, 1)) return count;
  // So that the bits take no more memory than the entries.
  return count / 64 > entries && fewInUse(count, entries + 1)
             ? sortedFeatures(columns, entries, count)
             : markedFeatures(columns, entries, count);
}

ColumnMove columnMove(const FeatureNumbers& from, const FeatureNumbers& to, Unlisted unlisted) {
  std::vector<std::uint32_t> appended;
  std::vector<int> columns(from.columns(), -1);
  for (std::uint64_t column = 0; column < columns.size(); ++column) {
    const std::uint64_t feature = from[column];
    std::uint64_t place = to.find(feature);
    if (place == to.columns()) {
      if (feature < to.count() && unlisted == Unlisted::leftOut) continue;
      place += appended.size();
      appended.push_back(static_cast<std::uint32_t>(feature));
    }
    columns[column] = static_cast<int>(place);
  }
  if (appended.empty()) return {to, std::move(columns)};
  std::vector<std::uint32_t> numbers;
  for (std::uint64_t column = 0; column < to.columns(); ++column)
    numbers.push_back(static_cast<std::uint32_t>(to[column]));
  numbers.insert(numbers.end(), appended.begin(), appended.end());
  return {{std::max(from.count(), to.count()), std::move(numbers)}, std::move(columns)};
}

}  // namespace zelmag
