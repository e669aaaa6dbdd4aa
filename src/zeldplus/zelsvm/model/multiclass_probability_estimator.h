// Labels with the probabilities of all labels.
#pragma once

#include <cstdint>

#include "zeldplus/zelsvm/model/binary_probability_resolver.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class MulticlassProbabilityEstimator : public BinaryProbabilityResolver<T> {
 public:
  // probabilities, one per label and sample, sample by sample, must outlive it.
  explicit MulticlassProbabilityEstimator(HostVector<T>& probabilities)
      : probabilities(&probabilities) {}

  void record(const HostVector<T>& sampleProbabilities, std::uint64_t sample) override;

 private:
  HostVector<T>* probabilities;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
