// What kernel rows cost one thread.
#pragma once

#include <cstdint>

#include "zeldplus/zelsvm/data/matrix.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Of a product with one stored value, where samples are kept sparse.
inline constexpr double nanosecondsPerSparseValue = 1.0;

// Of one kernel value's transform.
double transformCost(SVM_KERNEL kernelType);

// Of one kernel value of packed samples.
double packedNanoseconds(std::uint64_t features, SVM_KERNEL kernelType);

// Whether samples are kept packed rather than sparse.
bool packingPays(const zelmag::AbstractMatrix<double>& matrix);

// Estimate for a row of kernel values with so many samples of the matrix.
double rowNanoseconds(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t samples,
                      SVM_KERNEL kernelType);

}  // namespace zelsvm::inline ZEL_PLATFORM
