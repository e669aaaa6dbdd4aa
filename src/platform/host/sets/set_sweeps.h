// Sweeps over the samples of a working set, built once per instruction set.
#pragma once

#include <cstdint>
#include <type_traits>

#include "rules/smo_records.h"

namespace zelsvm {

// Arrays have a multiple of so many elements.
inline constexpr std::uint64_t setLanes = 16;

// What fills them up beyond the set's samples has offsets -inf and inf.
struct SetArrays {
  std::uint64_t size;
  unsigned groups;
  double* sums;
  const double* diagonal;
  const double* rises[2];  // offsets of the variables that may rise, by group
  const double* falls[2];  // and of those that may fall
};

// Of the group with the larger gap between the largest offset - sum that may rise and the smallest
// that may fall: both, and the first sample that has the largest.
struct SetExtremes {
  SmoUpperBeta<double> beta;
  unsigned group;
  unsigned index;
};

template <typename K>
struct SetSweeps {
  // First adds two rows, times their steps, to the sums.
  SetExtremes (*findFirst)(const SetArrays& arrays, const K* rowI, double stepI, const K* rowJ,
                           double stepJ);
  // The first of the group's samples whose pair with i promises most; noIndex where none lies below
  // up.
  unsigned (*findSecond)(const SetArrays& arrays, unsigned group, const K* rowI, double up,
                         double diagonalI);
};

struct SetSweepTable {
  SetSweeps<float> single;
  SetSweeps<double> full;
};

// The sweeps for this processor. Those within a set do not depend on it by a bit.
const SetSweepTable& setSweepTable();

template <typename K>
const SetSweeps<K>& setSweeps() {
  if constexpr (std::is_same_v<K, float>)
    return setSweepTable().single;
  else
    return setSweepTable().full;
}

#ifdef __x86_64__
namespace avx512 {
extern const SetSweepTable setSweepTable;
}
namespace avx2 {
extern const SetSweepTable setSweepTable;
}
#endif
namespace baseline {
extern const SetSweepTable setSweepTable;
}

}  // namespace zelsvm
