// The solvers' sweeps over the variables, built once per instruction set.
#pragma once

#include <cstdint>

namespace zelsvm::inline ZEL_PLATFORM {

// What a variable is to the selections, one byte each. A shrunk variable is in neither set.
using SmoState = unsigned char;
inline constexpr SmoState inUpperBit = 0x80;
inline constexpr SmoState inLowerBit = 0x40;
inline constexpr SmoState positiveBit = 0x01;

// Ranges of variables begin and end at multiples of this; what pads the last one has state 0.
inline constexpr std::uint64_t sweepStep = 16;

// The maximum of v over the upper set with its first position, -1 for none, and the minimum over
// the lower set.
struct SelectedUpper {
  double up;
  double low;
  std::int64_t position;
};

// The best gain with its first position, -1 for none.
struct SelectedLower {
  double gain;
  std::int64_t position;
};

// What the first selection found, per class (core: one class).
struct LowerQuery {
  double up[2];
  const double* row[2];
  double diagonal[2];       // K_ii
  const double* diagonals;  // K_tt; not read for unit diagonals
};

// A pair's step; a step is the multiplier's change times its sign.
struct GradientStep {
  const double* rowI;
  const double* rowJ;
  double stepI;
  double stepJ;
};

// v is -y times the gradient. Positions count from the given pointers' start; what a selection
// finds replaces the best so far only where it is better.
struct SmoSweeps {
  // Selects in one class (core) or separately in two, the positive one first (nu).
  void (*selectUpper[2])(const double* v, const SmoState* states, std::uint64_t begin,
                         std::uint64_t end, SelectedUpper* best);  // [nu]
  // Moves v by the step first, in the same pass.
  void (*updateAndSelect[2])(double* v, const SmoState* states, const GradientStep& step,
                             std::uint64_t begin, std::uint64_t end, SelectedUpper* best);  // [nu]
  void (*selectLower[2][2])(const double* v, const SmoState* states, const LowerQuery& query,
                            std::uint64_t begin, std::uint64_t end,
                            SelectedLower* best);  // [nu][unitDiagonal]
  // v[k] -= sum_c columns[k + c * ld] weights[c].
  void (*addColumns)(double* v, const double* columns, std::uint64_t ld, const double* weights,
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
