// The rules of sequential minimal optimisation. Working sets by second-order information: Fan, Chen
// and Lin, "Working Set Selection Using Second Order Information", JMLR 6 (2005).
//
// Notation: y label sign, a multiplier, c its upper bound, g gradient entry, v = -y g. V is a
// number or a vector of lanes, M its truth value or mask.
#pragma once

#include "rules/kernel_rules.h"

namespace zelsvm {

// What a curvature that is not positive is replaced by.
inline constexpr double minimalCurvature = 1e-12;

// May a grow in the direction of y? positive: y > 0.
template <typename M, typename V>
ZEL_RULE auto inUpperSet(M positive, V a, V c) {
  return positive ? a < c : a > 0.0;
}

// May a shrink in the direction of y?
template <typename M, typename V>
ZEL_RULE auto inLowerSet(M positive, V a, V c) {
  return positive ? a > 0.0 : a < c;
}

// v of a variable.
template <typename M, typename V>
ZEL_RULE V violation(M positive, V g) {
  return positive ? -g : g;
}

// Second derivative along a pair's step: K_ii + K_jj - 2 K_ij, floored.
template <typename V>
ZEL_RULE V pairCurvature(V diagonalSum, V k) {
  const V q = diagonalSum - 2.0 * k;
  return q <= 0.0 ? V{} + minimalCurvature : q;
}

// Objective change that a pair promises; b = v_i - v_j > 0.
template <typename V>
ZEL_RULE V pairGain(V b, V curvature) {
  return -(b * b) / curvature;
}

struct PairValues {
  double i;
  double j;
};

ZEL_RULE double withinBox(double a, double c) { return a < 0 ? 0 : (a > c ? c : a); }

// The two multipliers after their unconstrained step along delta and the clipping to [0, c]: the
// tests of the second round read what the first produced, while the invariant (sum or difference)
// stays the one before clipping. A step across the whole box and more ends alike, so it is cut
// first: beside the huge steps along flat pairs the invariant would lose its digits. Of unequal
// bounds the last subtraction may round to a place outside.
ZEL_RULE PairValues clippedPair(bool sameSign, PairValues a, double delta, PairValues c) {
  const double farthest = c.i + c.j;
  delta = delta > farthest ? farthest : (delta < -farthest ? -farthest : delta);
  PairValues n{sameSign ? a.i - delta : a.i + delta, a.j + delta};
  const double sum = n.i + n.j;
  const double diff = n.i - n.j;
  const double x = sameSign ? sum - c.j : diff;
  if (x > 0) {
    if (!sameSign && n.j < 0) n = {diff, 0};
    if (sameSign && n.j > c.j) n = {sum - c.j, c.j};
  } else if (n.i < 0) {
    n = {0, sameSign ? sum : -diff};
  }
  if (x > c.i - c.j) {
    if (n.i > c.i) n = {c.i, sameSign ? sum - c.i : c.i - diff};
  } else if (!sameSign && n.j > c.j) {
    n = {c.j + diff, c.j};
  } else if (sameSign && n.j < 0) {
    n = {sum, 0};
  }
  return {withinBox(n.i, c.i), withinBox(n.j, c.j)};
}

// Step of the pair (i, j) from its gradient entries.
ZEL_RULE double pairStep(bool sameSign, double gi, double gj, double curvature) {
  return ((sameSign ? gi : -gi) - gj) / curvature;
}

// Gradient entry k after a_i and a_j moved: a step is the multiplier's change times its sign. Since
// signs are exact factors, this is g + fma(da_i, y_i y_k K_ik, da_j y_j y_k K_jk) to the last bit.
ZEL_RULE double updatedGradient(double g, double yk, double stepI, double ki, double stepJ,
                                double kj) {
  return g + yk * fusedMultiplyAdd(stepI, ki, kj * stepJ);
}

// Does a variable at a bound lie beyond the working set in the direction that keeps it there?
ZEL_RULE bool isShrinkable(bool positive, double a, double c, double v, double up, double low) {
  const bool upper = a >= c;
  const bool lower = a <= 0;
  if (positive ? upper : lower) return v > up;
  if (positive ? lower : upper) return v < low;
  return false;
}

}  // namespace zelsvm
