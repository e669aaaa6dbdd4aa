#include "platform/host/sweeps/sigmoid_sweeps.h"

#include "rules/elementary_functions.h"
#include "rules/sigmoid_rules.h"

namespace zelsvm::ZEL_ISA {
namespace {

double functional(const double* d, const double* t, std::uint64_t n, double A, double B) {
  double sum = 0;
#pragma omp simd reduction(+ : sum)
  for (std::uint64_t i = 0; i < n; ++i) {
    const double f = sigmoidArgument(d[i], A, B);
    sum += sigmoidLoss(t[i], f, log(1 + exp(-__builtin_fabs(f))));
  }
  return sum;
}

SigmoidHessian<double> hessian(const double* d, const double* t, std::uint64_t n, double A,
                               double B) {
  double g1 = 0, g2 = 0, h11 = 0, h21 = 0, h22 = 0;
#pragma omp simd reduction(+ : g1, g2, h11, h21, h22)
  for (std::uint64_t i = 0; i < n; ++i) {
    const double f = sigmoidArgument(d[i], A, B);
    const auto part = sigmoidDerivatives(d[i], t[i], f, exp(-__builtin_fabs(f)));
    g1 += part.g1;
    g2 += part.g2;
    h11 += part.h11;
    h21 += part.h21;
    h22 += part.h22;
  }
  return {g1, g2, h11, h21, h22};
}

}  // namespace

extern const SigmoidSweeps sigmoidSweepTable;
const SigmoidSweeps sigmoidSweepTable{functional, hessian};

}  // namespace zelsvm::ZEL_ISA
