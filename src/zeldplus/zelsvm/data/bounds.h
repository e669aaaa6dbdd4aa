// Per-column (minimum, maximum) pairs and the linear scaling rule built on them.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeldplus/inc/zelvectors.h"

namespace zelmag::inline ZEL_PLATFORM {

// Maps v from its column's bounds (x minimum, y maximum) to range (x lower, y upper).
template <typename T>
class Multiscale {
 public:
  virtual ~Multiscale() = default;

  // A constant column goes to the lower end of the range.
  static T scale(T v, const double2& range, const double2& bounds) {
    if (bounds.y - bounds.x == 0) return range.x;
    return (v - bounds.x) * (range.y - range.x) / (bounds.y - bounds.x) + range.x;
  }

  // Columns for which bounds holds no entry stay as they are.
  static T scale(T v, const double2& range, const zelsvm::HostVector<double2>& bounds,
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
    double2 bounds{0, 0};
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
    if (entry.bounds.x > v) entry.bounds.x = v;
    if (v > entry.bounds.y) entry.bounds.y = v;
  }

  // Writes every column's pair, (0, 0) for columns never seen.
  void store(zelsvm::HostVector<double2>& bounds) const {
    for (std::uint64_t j = 0; j < bounds.size(); ++j)
      bounds.set(j, j < entries.size() && entries[j].seen ? entries[j].bounds : double2{0, 0});
  }

 private:
  std::vector<Entry> entries;
};

}  // namespace zelmag::inline ZEL_PLATFORM
