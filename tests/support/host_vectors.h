// Vectors of the system from and to standard ones.
#pragma once

#include <utility>
#include <vector>

#include "zeldplus/inc/zelvectors.h"

namespace zeltest {

template <typename T>
zelsvm::HostVector<T> hostVector(const std::vector<T>& values,
                                 zel::MemoryKind kind = zel::MemoryKind::heap) {
  zelsvm::HostVector<T> vector(values.size(), kind);
  for (std::size_t i = 0; i < values.size(); ++i) vector.set(i, values[i]);
  return vector;
}

inline zel::IndexList<> indexList(const std::vector<unsigned long long>& values) {
  zel::IndexList<> list(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) list[i] = values[i];
  return list;
}

// Elements in any kind of memory.
template <typename T>
std::vector<T> valuesOf(const zel::AbstractVector<T>& vector) {
  std::vector<T> values(vector.size());
  zelsvm::HostVector<T> view(values.size(), values.data());
  view.copyFrom(vector, 0, 0, values.size());
  return values;
}

inline std::vector<std::pair<double, double>> pairsOf(const zelsvm::HostVector<double2>& vector) {
  std::vector<std::pair<double, double>> pairs;
  for (const double2& pair : valuesOf(vector)) pairs.emplace_back(pair.x, pair.y);
  return pairs;
}

}  // namespace zeltest
