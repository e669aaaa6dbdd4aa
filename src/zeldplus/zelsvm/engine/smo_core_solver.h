// SMO with one equality constraint: C-classification, one-class and epsilon-regression.
#pragma once

#include "zeldplus/zelsvm/engine/rssolver.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class SmoCoreSolver : public SmoBaseSolver<T> {
 public:
  explicit SmoCoreSolver(const SvmContext<T>& params);

 protected:
  T selectWorkingSet(SmoSelection<T>& selection, SmoSelection<T>& second,
                     unsigned activeCount) override;
  SmoPair<T> findDelta(const HostVector<char2>& status, const SmoSelection<T>& selection,
                       const SmoSelection<T>& second, unsigned activeCount) override;
  void reduceWorkingSet(const SmoSelection<T>& selection, const SmoSelection<T>& second,
                        unsigned activeCount) override;

 private:
  // One entry per block of a launch; entry 0 receives the result.
  zel::DeviceVector<SmoUpperBeta<T>> upperBlocks;
  zel::DeviceVector<SmoLowerBeta<T>> lowerBlocks;
  zel::DeviceVector<unsigned> indexBlocks;
  HostVector<SmoUpperBeta<T>> upperHost;
  HostVector<unsigned> indexHost;
  unsigned selectLimit;
  unsigned deltaLimit;
  unsigned reduceLimit;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
