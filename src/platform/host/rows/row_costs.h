// What kernel rows cost one thread.
#pragma once

#include <cstdint>

#include "data/matrix.h"
#include "rules/kernel_type.h"

namespace zelsvm {

// Of a product with one stored value, where samples are kept sparse.
inline constexpr double nanosecondsPerSparseValue = 1.0;

// Of one kernel value of packed samples, given what the kernel function takes of it.
double packedNanoseconds(std::uint64_t features, double functionNanoseconds);

// Whether samples are kept packed rather than sparse.
bool packingPays(const zelmag::AbstractMatrix<double>& matrix);

// Estimate for a row of kernel values with so many samples of the matrix.
double rowNanoseconds(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t samples,
                      SVM_KERNEL kernelType);

}  // namespace zelsvm
