// Gamma by the variance of the samples.
#pragma once

#include "data/svm_data.h"

namespace zelsvm::detail {

// Gamma::oneOverFeaturesTimesVariance of these samples, which count by their weights.
double gammaByVariance(const SvmData<double>& samples);

}  // namespace zelsvm::detail
