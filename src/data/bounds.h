// Per-column (minimum, maximum) pairs and the linear scaling rule built on them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "base/interval.h"
#include "base/vectors.h"

namespace zelmag {

// (minimum, maximum) of features, by their numbers.
using BoundsByFeature = std::map<std::uint64_t, zel::Interval>;

// Maps v from its column's bounds (minimum, maximum) to range.
template <typename T>
class Multiscale {
 public:
  virtual ~Multiscale() = default;

  // A constant column goes to the lower end of the range.
  static T scale(T v, const zel::Interval& range, const zel::Interval& bounds) {
    if (bounds.upper - bounds.lower == 0) return range.lower;
    return (v - bounds.lower) * (range.upper - range.lower) / (bounds.upper - bounds.lower) +
           range.lower;
  }

  // The way back, up to rounding.
  static T unscale(T v, const zel::Interval& range, const zel::Interval& bounds) {
    return (v - range.lower) * (bounds.upper - bounds.lower) / (range.upper - range.lower) +
           bounds.lower;
  }

  // Columns for which bounds holds no entry stay as they are.
  static T scale(T v, const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds,
                 std::uint64_t column) {
    return column < bounds.size() ? scale(v, range, bounds[column]) : v;
  }
};

// Bounds of the values seen so far, column by column. The first value of a column enters as both
// ends; a later value moves an end only by comparing below or above it, so NaN never does.
template <typename T>
class Multibound {
  struct Entry {
    bool seen = false;
    zel::Interval bounds{0, 0};
  };

 public:
  // What each column takes in memory.
  static constexpr std::size_t columnBytes = sizeof(Entry);

  explicit Multibound(std::uint64_t columns) : entries(columns) {}
  virtual ~Multibound() = default;

  void add(std::uint64_t column, T v) {
    Entry& entry = entries[column];
    if (!entry.seen) {
      entry = {true, {v, v}};
      return;
    }
    if (entry.bounds.lower > v) entry.bounds.lower = v;
    if (v > entry.bounds.upper) entry.bounds.upper = v;
  }

  // Writes every column's pair, (0, 0) for columns never seen.
  void store(zelsvm::HostVector<zel::Interval>& bounds) const {
    for (std::uint64_t j = 0; j < bounds.size(); ++j)
      bounds.set(j,
                 j < entries.size() && entries[j].seen ? entries[j].bounds : zel::Interval{0, 0});
  }

 private:
  std::vector<Entry> entries;
};

}  // namespace zelmag
