// The test that keeps infinities and NaN, which data files may hold, out of training.
#pragma once

#include "data/svm_data.h"

namespace zelsvm {

// Throws AppException naming the first sample, counted from 1, with a feature that is infinite or
// NaN.
template <typename T>
void requireFiniteFeatures(const zelmag::AbstractMatrix<T>& matrix);

// The same for targets.
template <typename T>
void requireFiniteTargets(const HostVector<T>& targets);

}  // namespace zelsvm
