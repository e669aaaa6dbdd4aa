// The probability parameters that belong to a problem kind.
#pragma once

#include <memory>

#include "zeldplus/zelsvm/training/probability_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Laplace scale for regression, sigmoids otherwise.
template <typename T>
class GenericProbabilityTrainer : public AbstractBuildHandler<T> {
 public:
  // The context must outlive it.
  explicit GenericProbabilityTrainer(const SvmContext<T>& context);
  void build(GenericModel<T>& model, SvmData<T>& data) override { trainer->build(model, data); }

 private:
  std::unique_ptr<AbstractProbabilityTrainer<T>> trainer;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
