// Walking sparse rows in column order, and scaling them without visiting the columns that stay
// zero.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "base/errors.h"
#include "base/memory.h"
#include "data/bounds.h"

namespace zelmag {

// Offsets of sparse rows are 32-bit: throws RuntimeException for more stored values than they
// count.
inline void requireOffsetRange(std::uint64_t valueCount) {
  if (valueCount > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
    throw zel::RuntimeException("The sparse data hold more than 2147483647 values.");
}

// One sparse row with its columns ascending and distinct; of a repeated column the last entry
// counts.
template <typename T>
class AscendingRow {
 public:
  // Looks at stored entries begin … end - 1 and returns how many there are once repeats are gone.
  std::uint64_t assign(const int* allColumns, const T* allValues, std::uint64_t begin,
                       std::uint64_t end) {
    columns = allColumns + begin;
    values = allValues + begin;
    const std::uint64_t count = end - begin;
    if (std::adjacent_find(columns, columns + count, std::greater_equal<>()) == columns + count)
      return count;
    return sort(count);
  }

  const int* columns = nullptr;
  const T* values = nullptr;

 private:
  std::uint64_t sort(std::uint64_t count) {
    order.resize(count);
    for (std::uint64_t k = 0; k < count; ++k) order[k] = k;
    std::stable_sort(order.begin(), order.end(),
                     [this](auto a, auto b) { return columns[a] < columns[b]; });
    sortedColumns.clear();
    sortedValues.clear();
    for (const std::uint64_t k : order) {
      if (!sortedColumns.empty() && sortedColumns.back() == columns[k]) {
        sortedValues.back() = values[k];
      } else {
        sortedColumns.push_back(columns[k]);
        sortedValues.push_back(values[k]);
      }
    }
    columns = sortedColumns.data();
    values = sortedValues.data();
    return sortedColumns.size();
  }

  std::vector<std::uint64_t> order;
  std::vector<int> sortedColumns;
  std::vector<T> sortedValues;
};

// Scaled rows of a sparse matrix: absent entries are scaled like any other 0, but only the columns
// where that gives something else than 0 are visited.
template <typename T>
class ScaledSparseRows {
 public:
  ScaledSparseRows(const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds,
                   std::uint64_t cols)
      : range(range), bounds(bounds) {
    const std::uint64_t known = std::min(cols, bounds.size());
    const auto zero = [&](std::uint64_t j) { return Multiscale<T>::scale(0, range, bounds, j); };
    std::uint64_t count = 0;
    for (std::uint64_t j = 0; j < known; ++j) count += zero(j) != 0;
    // A file of one line may name billions of columns.
    zel::requireHostMemory(count, sizeof(ScaledZero));
    scaledZeros.reserve(count);
    for (std::uint64_t j = 0; j < known; ++j)
      if (zero(j) != 0) scaledZeros.push_back({static_cast<int>(j), zero(j)});
  }

  // Calls sink(column, value) for every scaled value of the row that is not 0, columns ascending.
  template <typename Sink>
  void forEach(const AscendingRow<T>& row, std::uint64_t count, Sink sink) const {
    auto absent = scaledZeros.begin();
    for (std::uint64_t k = 0; k < count; ++k) {
      const int column = row.columns[k];
      for (; absent != scaledZeros.end() && absent->column < column; ++absent)
        sink(absent->column, absent->value);
      if (absent != scaledZeros.end() && absent->column == column) ++absent;
      const T v =
          Multiscale<T>::scale(row.values[k], range, bounds, static_cast<std::uint64_t>(column));
      if (v != 0) sink(column, v);
    }
    for (; absent != scaledZeros.end(); ++absent) sink(absent->column, absent->value);
  }

 private:
  struct ScaledZero {
    int column;
    T value;
  };
  zel::Interval range;
  const zelsvm::HostVector<zel::Interval>& bounds;
  std::vector<ScaledZero> scaledZeros;
};

}  // namespace zelmag
