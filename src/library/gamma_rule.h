// Gamma by the variance of the samples.
#pragma once

#include "data/matrix.h"

namespace zelsvm::detail {

// Gamma::oneOverFeaturesTimesVariance of these samples.
double gammaByVariance(const zelmag::AbstractMatrix<double>& samples);

}  // namespace zelsvm::detail
