// Sums of the sigmoid fit over a range of samples, built once per instruction set.
#pragma once

#include <cstdint>

#include "rules/sigmoid_hessian.h"

namespace zelsvm {

// Both take n decision values d, targets t and weights w.
struct SigmoidSweeps {
  double (*functional)(const double* d, const double* t, const double* w, std::uint64_t n, double A,
                       double B);
  SigmoidHessian<double> (*hessian)(const double* d, const double* t, const double* w,
                                    std::uint64_t n, double A, double B);
};

// The sweeps for this processor.
const SigmoidSweeps& sigmoidSweeps();

#ifdef __x86_64__
namespace avx512 {
extern const SigmoidSweeps sigmoidSweepTable;
}
namespace avx2 {
extern const SigmoidSweeps sigmoidSweepTable;
}
#endif
namespace baseline {
extern const SigmoidSweeps sigmoidSweepTable;
}

}  // namespace zelsvm
