// The trainer and the solver of one training run, chosen by the SVM type.
#pragma once

#include <memory>

#include "zeldplus/zelsvm/training/trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class GenericTrainer {
 public:
  // The context must outlive it. Throws AppException for an SVM type without a trainer.
  explicit GenericTrainer(const SvmContext<T>& context);
  virtual ~GenericTrainer() = default;

  void train(GenericModel<T>& model, SvmData<T>& data) { trainer->train(model, data); }
  void addHandler(AbstractBuildHandler<T>& handler) { trainer->addHandler(handler); }

 private:
  std::unique_ptr<AbstractSvmSolver<T>> solver;
  std::unique_ptr<AbstractTrainer<T>> trainer;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
