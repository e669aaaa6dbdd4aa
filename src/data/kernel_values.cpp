#include "data/kernel_values.h"

#include <cmath>

#include "base/errors.h"

namespace zelmag {
namespace {

template <typename Target, typename Number>
void gather(Target* target, const StridedNumbers<Number>& numbers, std::uint64_t row,
            std::span<const std::uint64_t> columns) {
  const Number* const source = numbers.first + static_cast<std::ptrdiff_t>(row) * numbers.rowStride;
  bool isFinite = true;
  for (std::uint64_t k = 0; k < columns.size(); ++k) {
    const Number value = source[static_cast<std::ptrdiff_t>(columns[k]) * numbers.columnStride];
    isFinite = isFinite && std::isfinite(value);
    target[k] = static_cast<Target>(value);
  }
  if (!isFinite) throwNotFiniteKernel(row);
}

}  // namespace

void throwNotFiniteKernel(std::uint64_t row) {
  zel::throwAppException("The kernel values of sample %lu are not finite numbers.", row + 1);
}

template <typename Number>
void KernelTable<Number>::read(double* target, std::uint64_t row,
                               std::span<const std::uint64_t> columns) const {
  gather(target, numbers, row, columns);
}

template <typename Number>
void KernelTable<Number>::read(float* target, std::uint64_t row,
                               std::span<const std::uint64_t> columns) const {
  gather(target, numbers, row, columns);
}

template <typename Number>
double KernelTable<Number>::diagonal(std::uint64_t row) const {
  const std::uint64_t column[] = {row};
  double value = 0;
  read(&value, row, column);
  return value;
}

template class KernelTable<double>;
template class KernelTable<float>;

}  // namespace zelmag
