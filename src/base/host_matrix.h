// A row-major view of host numbers as a table.
#pragma once

#include <cstdint>

#include "base/vectors.h"

namespace zel {

// Looks at rows x cols elements owned elsewhere. Indices are not checked.
template <typename T>
class HostMatrix {
 public:
  HostMatrix(T* elements, std::uint64_t cols, std::uint64_t rows)
      : cols(cols), rows(rows), elements(cols * rows, elements) {}
  virtual ~HostMatrix() = default;

  [[nodiscard]] T* row(std::uint64_t i) { return elements.data() + i * cols; }

  const std::uint64_t cols;
  const std::uint64_t rows;

 private:
  MathVector<T> elements;
};

}  // namespace zel
