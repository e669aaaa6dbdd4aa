// SMO with one equality constraint: C-classification, one-class and epsilon-regression.
#pragma once

#include "solver/smo_solver.h"

namespace zelsvm {

template <typename T>
class SmoCoreSolver : public SmoBaseSolver<T> {
 public:
  explicit SmoCoreSolver(const SvmContext<T>& context);

 protected:
  T violationOf(const SmoSelection<T>& selection, const SmoSelection<T>& second) const override;
};

}  // namespace zelsvm
