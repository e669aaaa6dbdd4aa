// The Laplace distribution of a regression's residuals.
#pragma once

#include <memory>

#include "zeldplus/zelsvm/training/probability_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Mean of the absolute residuals below five standard deviations of the Laplace distribution that
// they all suggest, -1 when there is none.
template <typename T>
T laplaceScale(const HostVector<T>& residuals);

// Sets the model's sigma from out-of-fold residuals.
template <typename T>
class NumericProbabilityTrainer : public AbstractProbabilityTrainer<T> {
 public:
  // The context must outlive it.
  explicit NumericProbabilityTrainer(const SvmContext<T>& context) : context(&context) {}
  void build(GenericModel<T>& model, SvmData<T>& data) override;
  [[nodiscard]] std::unique_ptr<AbstractBuildHandler<T>> sibling(
      const SvmContext<T>& otherContext) const override {
    return std::make_unique<NumericProbabilityTrainer>(otherContext);
  }

 private:
  const SvmContext<T>* context;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
