// Sparse samples feature by feature, for single rows of kernel values.
#pragma once

#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "platform/host/block/block_sweeps.h"

namespace zelsvm {

// Lists of consecutive stretches of samples. A stretch's part of a result stays in the first-level
// cache unless there are too many features for so many stretches.
template <typename T>
class InvertedSamples {
 public:
  // Features lie below featureCount. Throws std::bad_alloc.
  void assign(const SparseFactors<T>& samples, std::uint64_t count, std::uint64_t featureCount);
  void clear() { rows = 0; }
  [[nodiscard]] bool isAssigned() const { return rows != 0; }

  [[nodiscard]] std::uint64_t stretch() const { return stretchRows; }
  // out[i - begin], i = begin … begin + stretch - 1 among the samples, is the dot product of sample
  // i with the row of these features and values, summed in their order. begin is a multiple of
  // stretch.
  void multiply(const std::vector<int>& features, const std::vector<T>& values, std::uint64_t begin,
                T* out) const;
  // Stored values that a product with a row of these features meets.
  [[nodiscard]] double work(const std::vector<int>& features) const;

 private:
  [[nodiscard]] std::uint64_t cell(std::uint64_t row, std::uint64_t feature) const {
    return row / stretchRows * cols + feature;
  }

  std::uint64_t rows = 0;
  std::uint64_t cols = 0;
  std::uint64_t stretchRows = 1;
  HostVector<T> elements;
  HostVector<unsigned> positions;  // of a value's sample within its stretch
  HostVector<unsigned> starts;     // by stretch and feature
  std::vector<unsigned> featureCounts;
};

}  // namespace zelsvm
