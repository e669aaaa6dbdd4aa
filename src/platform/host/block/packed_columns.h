// Samples laid out for register tiles: as columns of a block of kernel values, or as its rows.
#pragma once

#include <cstdint>

#include "base/vectors.h"
#include "platform/host/block/block_sweeps.h"
#include "platform/host/block/sample_choice.h"

namespace zelsvm {

// Of a feature that a sparse sample repeats the last entry counts.
template <typename T>
class PackedColumns {
 public:
  // What is chosen is copied. Throws std::bad_alloc.
  void assign(const SampleChoice& samples);

  [[nodiscard]] std::uint64_t count() const { return columns; }
  [[nodiscard]] std::uint64_t length() const { return features; }
  [[nodiscard]] std::uint64_t panels() const { return (columns + width - 1) / width; }
  [[nodiscard]] const T* values() const { return elements.data(); }
  // Squared norms, summed as products are.
  [[nodiscard]] const T* norms() const { return squares.data(); }

 private:
  void packPanel(const SampleChoice& samples, std::uint64_t panel);

  std::uint64_t columns = 0;
  std::uint64_t features = 0;
  std::uint64_t width = 1;
  HostVector<T> elements;
  HostVector<T> squares;
};

// Of a sparse sample the last entry of a feature counts.
template <typename T>
class PackedRows {
 public:
  // What is chosen is copied. Throws std::bad_alloc.
  void assign(const SampleChoice& samples);

  [[nodiscard]] std::uint64_t length() const { return features; }
  [[nodiscard]] const T* values() const { return elements.data(); }
  [[nodiscard]] const T* norms() const { return squares.data(); }

 private:
  std::uint64_t features = 0;
  HostVector<T> elements;
  HostVector<T> squares;
};

}  // namespace zelsvm
