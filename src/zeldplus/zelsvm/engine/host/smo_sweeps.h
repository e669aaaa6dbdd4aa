// The solvers' sweeps over the variables, built once per instruction set.
#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "zeldplus/zelsvm/engine/smo_records.h"

namespace zelsvm::inline ZEL_PLATFORM {

// What a sweep reads. A position is an index into active, or the variable itself where active is
// null because all are. Variables from samples on use the kernel row entry of variable - samples.
struct SmoView {
  const double* gradient;
  const double* alpha;
  const char2* status;
  const double* diagonal;  // K(x, x) by sample; not read for unit diagonals
  const unsigned* active;
  double Cp;
  double Cn;
  std::uint64_t samples;
};

// Extremes of one class over a range: the maximum of v over the upper set with its first position,
// -1 for none, and the minimum over the lower set.
struct SelectedUpper {
  double up;
  double low;
  std::int64_t position;
};

// The best objective change over a range with its first position, -1 for none.
struct SelectedLower {
  double value;
  std::int64_t position;
};

// What the first selection found, per class (core: one class).
struct LowerQuery {
  double up[2];
  const double* row[2];
  double diagonal[2];  // K_ii
};

// A pair's step; a step is the multiplier's change times its sign.
struct GradientStep {
  const double* rowI;
  const double* rowJ;
  double stepI;
  double stepJ;
};

struct SmoSweeps {
  // out: one record (core) or one per class, positive first (nu).
  void (*selectUpper)(const SmoView& view, std::uint64_t begin, std::uint64_t end,
                      SelectedUpper* out);
  void (*selectUpperNu)(const SmoView& view, std::uint64_t begin, std::uint64_t end,
                        SelectedUpper* out);
  SelectedLower (*selectLower[2][2])(const SmoView& view, const LowerQuery& query,
                                     std::uint64_t begin, std::uint64_t end);  // [nu][unitDiagonal]
  // gradient[k] += the step's effect for variables begin … end - 1.
  void (*updateGradient)(double* gradient, const char2* status, std::uint64_t samples,
                         const GradientStep& step, std::uint64_t begin, std::uint64_t end);
  // gradient[k] += y_k sum_c columns[k' + c * ld] weights[c] for variables begin … end - 1.
  void (*addColumns)(double* gradient, const char2* status, std::uint64_t samples,
                     const double* columns, std::uint64_t ld, const double* weights,
                     std::uint64_t count, std::uint64_t begin, std::uint64_t end);
};

// The sweeps for this processor.
const SmoSweeps& smoSweeps();

#ifdef __x86_64__
namespace avx512 {
extern const SmoSweeps smoSweepTable;
}
namespace avx2 {
extern const SmoSweeps smoSweepTable;
}
#endif
namespace baseline {
extern const SmoSweeps smoSweepTable;
}

}  // namespace zelsvm::inline ZEL_PLATFORM
