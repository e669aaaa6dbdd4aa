// Which features the columns of a matrix stand for.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace zelmag {

// Do unused features so outnumber those in use that a column for each would cost too much? Matrices
// and scale records list those in use then, and the others exist nowhere.
constexpr bool fewInUse(std::uint64_t count, std::uint64_t inUse) {
  return count > 2 * inUse + 1000;
}

// Every feature from 0 on, one column each, or the listed ones only.
class FeatureNumbers {
 public:
  // Every feature.
  FeatureNumbers(std::uint64_t count = 0) : total(count) {}
  // The listed ones of count features, each once.
  FeatureNumbers(std::uint64_t count, std::vector<std::uint32_t> listed)
      : total(count), list(std::make_shared<std::vector<std::uint32_t>>(std::move(listed))) {}

  // Features, with a column or without one.
  [[nodiscard]] std::uint64_t count() const { return total; }
  [[nodiscard]] bool isListed() const { return list != nullptr; }
  [[nodiscard]] std::uint64_t columns() const { return list ? list->size() : total; }
  // Of a column.
  [[nodiscard]] std::uint64_t operator[](std::uint64_t column) const {
    return list ? (*list)[column] : column;
  }
  // The column of a feature; columns() for one that has none. Listed features must ascend.
  [[nodiscard]] std::uint64_t find(std::uint64_t feature) const {
    if (!list) return std::min(feature, total);
    const auto found = std::lower_bound(list->begin(), list->end(), feature);
    const auto place = static_cast<std::uint64_t>(found - list->begin());
    return place < list->size() && *found == feature ? place : list->size();
  }

  // Whether every feature that has a column in both has the same one.
  [[nodiscard]] bool agreesWith(const FeatureNumbers& other) const {
    return list == other.list || (list && other.list && *list == *other.list);
  }

 private:
  std::uint64_t total;
  std::shared_ptr<const std::vector<std::uint32_t>> list;
};

// The features that sparse entries in these columns, all below count, belong to: listed where few
// are in use, the last one among them.
FeatureNumbers featuresInUse(const int* columns, std::uint64_t entries, std::uint64_t count);

// How the columns of one matrix become those of another.
struct ColumnMove {
  FeatureNumbers features;
  std::vector<int> columns;  // of each old column the new one; -1: it is left out
};

// What a feature becomes that has no column where it is to go, though it lies below the count
// there.
enum class Unlisted { leftOut, appended };

// From the features of a matrix to those of another, listed in ascending order; features that lie
// behind all of those get columns behind theirs.
ColumnMove columnMove(const FeatureNumbers& from, const FeatureNumbers& to, Unlisted unlisted);

}  // namespace zelmag
