#include "zeldplus/zelsvm/model/multiclass_probability_estimator.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
void MulticlassProbabilityEstimator<T>::record(const HostVector<T>& sampleProbabilities,
                                               std::uint64_t sample) {
  const std::uint64_t k = sampleProbabilities.size();
  probabilities->copyFrom(sampleProbabilities, sample * k, 0, k);
}

template class MulticlassProbabilityEstimator<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
