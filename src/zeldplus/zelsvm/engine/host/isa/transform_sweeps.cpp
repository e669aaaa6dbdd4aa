#include "zeldplus/zelsvm/engine/host/transform_sweeps.h"

#include <features.h>

#include "zeldplus/zelsvm/engine/host/isa/pack.h"
#include "zeldplus/zelsvm/engine/kernel_rules.h"

// The C library's vector forms, where it has them.
#if defined(__x86_64__) && defined(__GLIBC__)
#define ZEL_VECTOR_MATH __attribute__((simd("notinbranch")))
#else
#define ZEL_VECTOR_MATH
#endif
extern "C" ZEL_VECTOR_MATH double exp(double) noexcept;
extern "C" ZEL_VECTOR_MATH double tanh(double) noexcept;

namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA {
namespace {

void polynomial(double* m, std::uint64_t n, double g, double c0, unsigned degree) {
  if (degree == 0) {
    for (std::uint64_t i = 0; i < n; ++i) m[i] = 1.0;
    return;
  }
#pragma omp simd
  for (std::uint64_t i = 0; i < n; ++i) m[i] = fusedMultiplyAdd(g, m[i], c0);
  std::uint64_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    const Pack power = binaryPower(load(m + i), degree, splat(1.0));
    __builtin_memcpy(m + i, &power, sizeof power);
  }
  for (; i < n; ++i) m[i] = binaryPower(m[i], degree, 1.0);
}

void radial(double* m, const double* norms, std::uint64_t n, double g, double norm) {
#pragma omp simd
  for (std::uint64_t i = 0; i < n; ++i) m[i] = exp(radialExponent(g, norm, norms[i], m[i]));
}

void sigmoid(double* m, std::uint64_t n, double g, double c0) {
#pragma omp simd
  for (std::uint64_t i = 0; i < n; ++i) m[i] = tanh(fusedMultiplyAdd(g, m[i], c0));
}

double dot(const double* a, const double* b, std::uint64_t n) {
  double sum = 0;
#pragma omp simd reduction(+ : sum)
  for (std::uint64_t i = 0; i < n; ++i) sum += a[i] * b[i];
  return sum;
}

}  // namespace

extern const TransformSweeps transformSweepTable;
const TransformSweeps transformSweepTable{polynomial, radial, sigmoid, dot};

}  // namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA
