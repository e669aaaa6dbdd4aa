// SMO with one equality constraint per label sign: nu-classification and nu-regression. Schölkopf,
// Smola, Williamson and Bartlett, "New Support Vector Algorithms", Neural Computation 12 (2000).
#pragma once

#include "zeldplus/zelsvm/engine/rssolver.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Both members of a working pair have the same sign. The selections are those of the positive and
// the negative class.
template <typename T>
class SmoNuSolver : public SmoBaseSolver<T> {
 public:
  explicit SmoNuSolver(const SvmContext<T>& params);

 protected:
  T selectWorkingSet(SmoSelection<T>& positive, SmoSelection<T>& negative) override;
  SmoPair<T> findDelta(const HostVector<char2>& status, const SmoSelection<T>& positive,
                       const SmoSelection<T>& negative) override;
  T calculateRho(T& r, const GradientBounds<T>& positive,
                 const GradientBounds<T>& negative) const override;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
