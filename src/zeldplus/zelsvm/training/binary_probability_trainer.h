// The sigmoid of a pair of labels.
#pragma once

#include <memory>

#include "zeldplus/zelsvm/model/binary_decision_resolver.h"
#include "zeldplus/zelsvm/training/probability_trainer.h"
#include "zeldplus/zelsvm/training/sigmoid_fit.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Fits the sigmoid of the data set's label pair to out-of-fold decision values; a pair that has one
// keeps it.
template <typename T>
class BinaryProbabilityTrainer : public AbstractProbabilityTrainer<T> {
 public:
  // The context must outlive it.
  explicit BinaryProbabilityTrainer(const SvmContext<T>& context) : context(&context) {}
  void build(GenericModel<T>& model, SvmData<T>& data) override;
  [[nodiscard]] std::unique_ptr<AbstractBuildHandler<T>> sibling(
      const SvmContext<T>& otherContext) const override {
    return std::make_unique<BinaryProbabilityTrainer>(otherContext);
  }

 private:
  const SvmContext<T>* context;
  BinaryDecisionResolver<T> resolver;
  SigmoidFit<T> sigmoidFit;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
