// Sparse samples as columns and rows of a block of kernel values: what neither stores is not
// touched.
#pragma once

#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "data/scaled_sparse_rows.h"
#include "platform/host/block/block_sweeps.h"
#include "platform/host/block/sample_choice.h"

namespace zelsvm {

// Of a repeated feature the last entry counts.
template <typename T>
class SparseSamples {
 public:
  // The matrix must outlive it: it is looked at where its rows are ascending. Throws
  // std::bad_alloc.
  void assign(const SampleChoice& samples);

  [[nodiscard]] std::uint64_t count() const { return begins.size(); }
  [[nodiscard]] std::uint64_t stored() const { return storedCount; }
  [[nodiscard]] const T* norms() const { return squares.data(); }
  // begins, ends, features and values.
  [[nodiscard]] SparseFactors<T> factors() const {
    return {begins.data(), ends.data(), features, values, nullptr, nullptr};
  }

 private:
  void copyAscending(const SampleChoice& samples);
  void makeNorms();

  std::vector<std::uint64_t> begins;
  std::vector<std::uint64_t> ends;
  const int* features = nullptr;
  const double* values = nullptr;
  std::vector<int> ownFeatures;
  std::vector<double> ownValues;
  std::uint64_t storedCount = 0;
  HostVector<T> squares;
};

// At most groupRows<T> samples, dense or sparse, laid out densely over the features that one of
// them has; of a repeated feature the last entry counts.
template <typename T>
class SparseRows {
 public:
  // Columns of the block have so many features; others take part in norms only.
  void setFeatures(std::uint64_t count);
  void assign(const SampleChoice& samples);

  // Entries of a sample by ascending feature, as assign takes them; until the next call.
  void readEntries(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t sample);
  [[nodiscard]] const std::vector<int>& features() const { return entryFeatures; }
  [[nodiscard]] const std::vector<T>& values() const { return entryValues; }

  [[nodiscard]] T entryNorm() const;

  [[nodiscard]] const unsigned* places() const { return placeOf.data(); }
  [[nodiscard]] const T* lines() const { return elements.data(); }
  [[nodiscard]] const T* norms() const { return squares; }

 private:
  void placeFeatures();
  void addEntries(std::uint64_t r);

  std::vector<unsigned> placeOf;
  std::vector<int> placed;
  HostVector<T> elements;
  alignas(64) T squares[groupRows<T>];
  zelmag::AscendingRow<double> ascending;
  // Of one row.
  std::vector<int> entryFeatures;
  std::vector<T> entryValues;
};

}  // namespace zelsvm
