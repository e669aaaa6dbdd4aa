// Sweeps over the samples of a working set.
#pragma once

#include <cstdint>

#include "rules/smo_records.h"

namespace zelsvm {

// Arrays of size elements, a multiple of setLanes. What fills them up beyond the set's samples has
// offsets -inf and inf.
struct SetArrays {
  std::uint64_t size;
  unsigned groups;
  double* sums;
  const double* diagonal;
  const double* rises[2];  // offsets of the variables that may rise, by group
  const double* falls[2];  // and of those that may fall
};

inline constexpr std::uint64_t setLanes = 16;

// sums += step K of two rows, then the extremes of offset - sum of each group; index is that of the
// first that has the largest, in the group with the largest gap alone.
struct SetExtremes {
  SmoUpperBeta<double> beta[2];
  unsigned group;
  unsigned index;
};

template <typename K>
struct SetSweeps {
  SetExtremes (*findFirst)(const SetArrays& arrays, const K* rowI, double stepI, const K* rowJ,
                           double stepJ);
  // The first of the group's samples whose pair with i promises most; noIndex where none has a
  // lower violation.
  unsigned (*findSecond)(const SetArrays& arrays, unsigned group, const K* rowI, double up,
                         double diagonalI);
};

template <typename K>
const SetSweeps<K>& setSweeps();

}  // namespace zelsvm
