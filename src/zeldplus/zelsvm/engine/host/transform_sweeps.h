// Elementwise kernel transforms and weighted sums, built once per instruction set.
#pragma once

#include <cstdint>

namespace zelsvm::inline ZEL_PLATFORM {

struct TransformSweeps {
  // m[i] = (g m[i] + c0)^degree, exactly 1 for degree 0.
  void (*polynomial)(double* m, std::uint64_t n, double g, double c0, unsigned degree);
  // m[i] = exp(g ((norm + norms[i]) - 2 m[i])).
  void (*radial)(double* m, const double* norms, std::uint64_t n, double g, double norm);
  // m[i] = tanh(g m[i] + c0).
  void (*sigmoid)(double* m, std::uint64_t n, double g, double c0);
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

}  // namespace zelsvm::inline ZEL_PLATFORM
