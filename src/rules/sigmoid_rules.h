// The terms of the sigmoid fit, sample by sample, in a form that neither overflows nor cancels.
// Lin, Lin and Weng, "A Note on Platt's Probabilistic Outputs for Support Vector Machines", Machine
// Learning 68 (2007).
//
// Notation: d decision value, t target, f = A d + B, e = exp(-|f|). The callers take exponentials
// and logarithms, which each of them has its own form of.
#pragma once

#include "rules/kernel_rules.h"
#include "rules/sigmoid_hessian.h"

namespace zelsvm {

ZEL_RULE double sigmoidArgument(double d, double A, double B) { return fusedMultiplyAdd(d, A, B); }

// The sample's part of the negative log likelihood; logTerm = log(1 + e).
ZEL_RULE double sigmoidLoss(double t, double f, double logTerm) {
  return (f >= 0 ? t : t - 1) * f + logTerm;
}

// The sample's part of the derivatives.
ZEL_RULE SigmoidHessian<double> sigmoidDerivatives(double d, double t, double f, double e) {
  const double denominator = 1 + e;
  const double p = (f >= 0 ? e : 1) / denominator;
  const double q = e / (denominator * denominator);
  return {d * (t - p), t - p, d * (d * q), d * q, q};
}

ZEL_RULE void addDerivatives(SigmoidHessian<double>& sum, const SigmoidHessian<double>& part) {
  sum.g1 += part.g1;
  sum.g2 += part.g2;
  sum.h11 += part.h11;
  sum.h21 += part.h21;
  sum.h22 += part.h22;
}

}  // namespace zelsvm
