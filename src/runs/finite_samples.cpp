#include "runs/finite_samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/errors.h"
#include "data/full_matrix.h"

namespace zelsvm {
namespace {

template <typename T>
bool isFiniteRow(const zelmag::AbstractMatrix<T>& matrix, std::uint64_t row) {
  bool isFinite = true;
  const auto look = [&isFinite](const T* values, std::uint64_t begin, std::uint64_t end) {
    isFinite = isFinite &&
               std::all_of(values, values + (end - begin), [](T v) { return std::isfinite(v); });
  };
  if (!matrix.isSparse()) {
    zelmag::forEachStretch(zelmag::asFull(matrix), row, look);
  } else {
    const auto begin = static_cast<std::uint64_t>(matrix.rowOffsets()[row]);
    look(matrix.values() + begin, begin, static_cast<std::uint64_t>(matrix.rowOffsets()[row + 1]));
  }
  return isFinite;
}

}  // namespace

template <typename T>
void requireFiniteFeatures(const zelmag::AbstractMatrix<T>& matrix) {
  // A finite sum of squares has finite terms only.
  for (std::uint64_t row = 0; row < matrix.rows(); ++row)
    if (!std::isfinite(matrix.rowNorms()[row]) && !isFiniteRow(matrix, row))
      zel::throwAppException("The features of sample %lu are not finite numbers.", row + 1);
}

template <typename T>
void requireFiniteTargets(const HostVector<T>& targets) {
  for (std::uint64_t i = 0; i < targets.size(); ++i)
    if (!std::isfinite(targets[i]))
      zel::throwAppException("The target of sample %lu is not a finite number.", i + 1);
}

template void requireFiniteFeatures(const zelmag::AbstractMatrix<double>&);
template void requireFiniteTargets(const HostVector<double>&);

}  // namespace zelsvm
