// The solvers' sweeps over the variables, built for each instruction set.
#pragma once

#include <cstdint>

namespace zelsvm {

// What a variable is to the selections, one byte each. A shrunk variable is in neither set.
using SmoState = unsigned char;
inline constexpr SmoState inUpperBit = 0x80;
inline constexpr SmoState inLowerBit = 0x40;
inline constexpr SmoState positiveBit = 0x01;

// Ranges of variables begin and end at multiples of this; what pads the last one has state 0.
inline constexpr std::uint64_t sweepStep = 16;

// The variables of a solve. v is -y times the gradient. A regression's two halves have the signs 1
// and -1 and the same v but for a constant, so one array serves both: variable q of a half has
// v[q] + offset[half]. Elsewhere there is one half, without an offset.
struct SweptVariables {
  double* v;
  const SmoState* states[2];  // by half
  double offset[2];
};

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

// Positions count from the arrays' start; what a selection finds replaces the best so far only
// where it is better. Selections are made separately in each half [halves], else in two classes,
// the positive one first (nu), or in one (core).
struct SmoSweeps {
  using SelectUpper = void (*)(const SweptVariables& variables, std::uint64_t begin,
                               std::uint64_t end, SelectedUpper* best);
  using UpdateAndSelect = void (*)(const SweptVariables& variables, const GradientStep& step,
                                   std::uint64_t begin, std::uint64_t end, SelectedUpper* best);
  using SelectLower = void (*)(const SweptVariables& variables, const LowerQuery& query,
                               std::uint64_t begin, std::uint64_t end, SelectedLower* best);

  SelectUpper selectUpper[2][2];  // [halves][nu]
  // Moves v by the step first, in the same pass.
  UpdateAndSelect updateAndSelect[2][2];  // [halves][nu]
  // One best for each half; a half may be left without where the other has a better one.
  SelectLower selectLower[2][2][2];  // [halves][nu][unitDiagonal]
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

}  // namespace zelsvm
