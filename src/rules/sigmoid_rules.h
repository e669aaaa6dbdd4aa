// The terms of the sigmoid fit, sample by sample, in a form that neither overflows nor cancels.
// Lin, Lin and Weng, "A Note on Platt's Probabilistic Outputs for Support Vector Machines", Machine
// Learning 68 (2007).
//
// Notation: d decision value, t target, f = A d + B, e = exp(-|f|). The callers take exponentials
// and logarithms, which each of them has its own form of. V is double, or on the host a vector of
// lanes.
#pragma once

#include "rules/kernel_rules.h"
#include "rules/sigmoid_hessian.h"

namespace zelsvm {

template <typename V>
ZEL_RULE V sigmoidArgument(V d, V A, V B) {
  return fusedMultiplyAdd(d, A, B);
}

// The sample's part of the negative log likelihood; logTerm = log(1 + e).
template <typename V>
ZEL_RULE V sigmoidLoss(V t, V f, V logTerm) {
  return ifNotNegative(f, t, t - V(1)) * f + logTerm;
}

// The sample's part of the derivatives.
template <typename V>
ZEL_RULE SigmoidHessian<V> sigmoidDerivatives(V d, V t, V f, V e) {
  const V denominator = V(1) + e;
  const V p = ifNotNegative(f, e, V(1)) / denominator;
  const V q = e / (denominator * denominator);
  return {d * (t - p), t - p, d * (d * q), d * q, q};
}

template <typename V>
ZEL_RULE SigmoidHessian<V> weightedDerivatives(V w, const SigmoidHessian<V>& part) {
  return {w * part.g1, w * part.g2, w * part.h11, w * part.h21, w * part.h22};
}

template <typename V>
ZEL_RULE void addDerivatives(SigmoidHessian<V>& sum, const SigmoidHessian<V>& part) {
  sum.g1 = sum.g1 + part.g1;
  sum.g2 = sum.g2 + part.g2;
  sum.h11 = sum.h11 + part.h11;
  sum.h21 = sum.h21 + part.h21;
  sum.h22 = sum.h22 + part.h22;
}

}  // namespace zelsvm
