// SMO with one equality constraint per label sign: nu-classification and nu-regression. Schölkopf,
// Smola, Williamson and Bartlett, "New Support Vector Algorithms", Neural Computation 12 (2000).
#pragma once

#include "solver/smo_solver.h"

namespace zelsvm {

// Both members of a working pair have the same sign. The selections are those of the positive and
// the negative class.
template <typename T>
class SmoNuSolver : public SmoBaseSolver<T> {
 public:
  explicit SmoNuSolver(const SvmContext<T>& context);

 protected:
  T violationOf(const SmoSelection<T>& positive, const SmoSelection<T>& negative) const override;
  T calculateRho(T& r, const GradientBounds<T>& positive,
                 const GradientBounds<T>& negative) const override;
};

}  // namespace zelsvm
