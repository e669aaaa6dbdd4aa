// The probability parameters that belong to a problem kind.
#pragma once

#include <cstdint>
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
  [[nodiscard]] std::unique_ptr<AbstractBuildHandler<T>> sibling(
      const SvmContext<T>& context) const override {
    return trainer->sibling(context);
  }
  [[nodiscard]] std::uint64_t randomNumbers(std::uint64_t samples) const override {
    return trainer->randomNumbers(samples);
  }

 private:
  std::unique_ptr<AbstractProbabilityTrainer<T>> trainer;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
