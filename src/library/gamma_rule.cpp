#include "library/gamma_rule.h"

#include <vector>

namespace zelsvm::detail {
namespace {

// Calls visit(weight, value) for every value that the matrix stores.
template <typename Visit>
void forEachStored(const SvmData<double>& samples, const Visit& visit) {
  const zelmag::AbstractMatrix<double>& matrix = samples.matrix();
  std::vector<double> row(matrix.isSparse() ? 0 : matrix.cols());
  for (std::uint64_t i = 0; i < matrix.rows(); ++i) {
    if (!matrix.isSparse()) {
      matrix.copyRow(row.data(), i, false);
      for (const double value : row) visit(samples.weight(i), value);
      continue;
    }
    for (int p = matrix.rowOffsets()[i]; p < matrix.rowOffsets()[i + 1]; ++p)
      visit(samples.weight(i), matrix.values()[p]);
  }
}

}  // namespace

double gammaByVariance(const SvmData<double>& samples) {
  const double features = static_cast<double>(samples.matrix().features().count());
  const double whole = samples.totalWeight() * features;
  double sum = 0;
  double stored = 0;
  forEachStored(samples, [&](double weight, double value) {
    sum += weight * value;
    stored += weight;
  });
  const double mean = sum / whole;
  double squares = (whole - stored) * mean * mean;
  forEachStored(samples, [&](double weight, double value) {
    squares += weight * (value - mean) * (value - mean);
  });
  const double variance = squares / whole;
  return variance > 0 ? 1 / (features * variance) : 1 / features;
}

}  // namespace zelsvm::detail
