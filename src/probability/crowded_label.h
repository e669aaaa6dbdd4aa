// Labels whose samples are all in one fold of a probability training.
#pragma once

#include <cstdint>
#include <optional>

#include "data/svm_data.h"

namespace zelsvm {

// A label with all of its samples in one fold, so that nothing can be learnt without that fold.
struct CrowdedLabel {
  double label;
  std::uint64_t samples;
};

// The first that a training with probabilities would meet, or a cross-validation with so many folds
// (fewer than 2: a training). Looks ahead in the calling thread's random numbers, which stay where
// they are.
template <typename T>
std::optional<CrowdedLabel> findCrowdedLabel(const SvmData<T>& data, std::uint64_t folds);

}  // namespace zelsvm
