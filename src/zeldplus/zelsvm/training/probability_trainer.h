// What a model's probability parameters are fitted to.
#pragma once

#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/prediction_handler.h"
#include "zeldplus/zelsvm/training/build_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class AbstractProbabilityTrainer : public AbstractBuildHandler<T> {
 public:
  // One per sample, for its place in the folds.
  [[nodiscard]] std::uint64_t randomNumbers(std::uint64_t samples) const override {
    return samples;
  }
};

// Decision values of all samples, each by a machine trained without it: five-fold cross-validation
// without build handlers. resolver, if any, turns a fold's decision values into its predictions.
template <typename T>
HostVector<T> outOfFoldValues(const SvmContext<T>& context, SvmData<T>& data,
                              AbstractPredictionHandler<T>* resolver);

}  // namespace zelsvm::inline ZEL_PLATFORM
