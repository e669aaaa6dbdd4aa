#include "data/table_matrix.h"

#include <algorithm>

namespace zelmag {

template <typename Number>
void StridedNumbers<Number>::copyStretch(double* target, std::uint64_t row, std::uint64_t begin,
                                         std::uint64_t end) const {
  const Number* const source = first + static_cast<std::ptrdiff_t>(row) * rowStride;
  if (columnStride == 1) {
    std::copy(source + begin, source + end, target);
    return;
  }
  for (std::uint64_t j = begin; j < end; ++j)
    *target++ = source[static_cast<std::ptrdiff_t>(j) * columnStride];
}

template <typename Number>
TableMatrix<Number>::TableMatrix(const StridedNumbers<Number>& numbers, std::uint64_t columns,
                                 std::uint64_t features, std::uint64_t rows)
    : FullMatrix<double>(features, rows), numbers(numbers), columns(columns) {
  makeNorms();
}

template <typename Number>
void TableMatrix<Number>::copyStretch(double* target, std::uint64_t row, std::uint64_t begin,
                                      std::uint64_t end) const {
  const std::uint64_t stored = std::clamp(columns, begin, end);
  numbers.copyStretch(target, row, begin, stored);
  std::fill(target + (stored - begin), target + (end - begin), 0.0);
}

template struct StridedNumbers<float>;
template struct StridedNumbers<double>;
template class TableMatrix<float>;
template class TableMatrix<double>;

}  // namespace zelmag
