// SMO with one equality constraint: C-classification, one-class and epsilon-regression.
#pragma once

#include "zeldplus/zelsvm/engine/rssolver.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class SmoCoreSolver : public SmoBaseSolver<T> {
 public:
  explicit SmoCoreSolver(const SvmContext<T>& params);

 protected:
  T selectWorkingSet(SmoSelection<T>& selection, SmoSelection<T>& second) override;
  SmoPair<T> findDelta(const HostVector<char2>& status, const SmoSelection<T>& selection,
                       const SmoSelection<T>& second) override;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
