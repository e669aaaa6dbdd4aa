// What searches over variables or samples find. Of equal ones the lower number wins: a thread takes
// them in ascending order, and folds look at it. What is not a number never wins.
#pragma once

#include "rules/rule.h"
#include "rules/smo_records.h"

namespace zelsvm {

// Of each group the largest value among those that may rise, where it is, and the smallest among
// those that may fall.
template <unsigned groups>
struct Extremes {
  SmoUpperBeta<double> beta[groups];
  unsigned index[groups];

  ZEL_RULE void clear() {
    for (unsigned g = 0; g < groups; ++g) {
      beta[g] = {-__builtin_inf(), __builtin_inf()};
      index[g] = noIndex;
    }
  }
  ZEL_RULE void takeRise(unsigned g, double value, unsigned number) {
    if (!(value > beta[g].up)) return;
    beta[g].up = value;
    index[g] = number;
  }
  ZEL_RULE void takeFall(unsigned g, double value) {
    if (value < beta[g].low) beta[g].low = value;
  }
  ZEL_RULE void fold(const Extremes& other) {
    for (unsigned g = 0; g < groups; ++g) {
      const double up = other.beta[g].up;
      takeRise(g, up, other.index[g]);
      if (up == beta[g].up && other.index[g] < index[g]) index[g] = other.index[g];
      takeFall(g, other.beta[g].low);
    }
  }
};

// Whose pair with the first index promises most.
struct Partner {
  SmoLowerBeta<double> best;

  ZEL_RULE void take(double gain, unsigned number) {
    if (gain < best.value) best = {gain, number};
  }
  ZEL_RULE void fold(const Partner& other) {
    take(other.best.value, other.best.index);
    if (other.best.value == best.value && other.best.index < best.index) best = other.best;
  }
};

inline constexpr Partner noPartner{{__builtin_inf(), noIndex}};

}  // namespace zelsvm
