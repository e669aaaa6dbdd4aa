// Vectors of the system from and to standard ones.
#pragma once

#include <utility>
#include <vector>

#include "base/interval.h"
#include "base/vectors.h"

namespace zeltest {

template <typename T>
zelsvm::HostVector<T> hostVector(const std::vector<T>& values) {
  zelsvm::HostVector<T> vector(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) vector.set(i, values[i]);
  return vector;
}

inline zel::IndexList<> indexList(const std::vector<unsigned long long>& values) {
  zel::IndexList<> list(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) list[i] = values[i];
  return list;
}

template <typename T>
std::vector<T> valuesOf(const zel::AbstractVector<T>& vector) {
  std::vector<T> values(vector.size());
  zelsvm::HostVector<T> view(values.size(), values.data());
  view.copyFrom(vector, 0, 0, values.size());
  return values;
}

inline std::vector<std::pair<double, double>> pairsOf(
    const zelsvm::HostVector<zel::Interval>& vector) {
  std::vector<std::pair<double, double>> pairs;
  for (const zel::Interval& pair : valuesOf(vector)) pairs.emplace_back(pair.lower, pair.upper);
  return pairs;
}

}  // namespace zeltest
