// Kernel functions elementwise, and weighted sums, built once per instruction set.
#pragma once

#include <cstdint>

#include "rules/kernel_functions.h"
#include "rules/kernel_type.h"

namespace zelsvm {

// values[i], i < n, the dot product of one sample with the i-th of others, becomes K of the two.
// norm and norms are their squared norms, which are read for kernel functions that say so.
using KernelTransform = void (*)(const KernelConstants& constants, double* values,
                                 const double* norms, std::uint64_t n, double norm);

struct TransformSweeps {
  KernelTransform kernels[SVM_KERNEL_UNSUPPORTED];  // by type
  // Sum of a[i] b[i].
  double (*dot)(const double* a, const double* b, std::uint64_t n);
};

// The sweeps for this processor.
const TransformSweeps& transformSweeps();

#ifdef __x86_64__
namespace avx512 {
extern const TransformSweeps transformSweepTable;
}
namespace avx2 {
extern const TransformSweeps transformSweepTable;
}
#endif
namespace baseline {
extern const TransformSweeps transformSweepTable;
}

}  // namespace zelsvm
