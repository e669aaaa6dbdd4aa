#include "library/gamma_rule.h"

namespace zelsvm::detail {

double gammaByVariance(const zelmag::AbstractMatrix<double>& samples) {
  const double features = static_cast<double>(samples.features().count());
  const double count = static_cast<double>(samples.rows()) * features;
  const std::uint64_t stored = samples.valueCount();
  double sum = 0;
  for (std::uint64_t k = 0; k < stored; ++k) sum += samples.values()[k];
  const double mean = sum / count;
  double squares = (count - static_cast<double>(stored)) * mean * mean;
  for (std::uint64_t k = 0; k < stored; ++k) {
    const double difference = samples.values()[k] - mean;
    squares += difference * difference;
  }
  const double variance = squares / count;
  return variance > 0 ? 1 / (features * variance) : 1 / features;
}

}  // namespace zelsvm::detail
