// A matrix that reads numbers where they lie, with any strides, in single precision or in full.
#pragma once

#include <cstddef>
#include <cstdint>

#include "data/full_matrix.h"

namespace zelmag {

// Element (i, j) lies i * rowStride + j * columnStride elements behind the first one.
template <typename Number>
struct StridedNumbers {
  const Number* first;
  std::ptrdiff_t rowStride;
  std::ptrdiff_t columnStride;

  // Writes the elements of a row in columns begin … end - 1.
  void copyStretch(double* target, std::uint64_t row, std::uint64_t begin, std::uint64_t end) const;
};

// Has no values(). Columns behind those of the numbers are 0.
template <typename Number>
class TableMatrix : public FullMatrix<double> {
 public:
  // The numbers must outlive it; so many columns of them, at most all features, are read.
  TableMatrix(const StridedNumbers<Number>& numbers, std::uint64_t columns, std::uint64_t features,
              std::uint64_t rows);

  [[nodiscard]] const double* values() const override { return nullptr; }
  void copyStretch(double* target, std::uint64_t row, std::uint64_t begin,
                   std::uint64_t end) const override;

 private:
  StridedNumbers<Number> numbers;
  std::uint64_t columns;
};

}  // namespace zelmag
