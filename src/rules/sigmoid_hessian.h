// The derivatives of the sigmoid fit as one record.
#pragma once

namespace zelsvm {

// Sums over the samples with decision value d, target t and probability p: d (t - p), t - p,
// d² p (1 - p), d p (1 - p) and p (1 - p).
template <typename T>
struct SigmoidHessian {
  T g1;
  T g2;
  T h11;
  T h21;
  T h22;
};

static_assert(sizeof(SigmoidHessian<double>) == 40);

}  // namespace zelsvm
