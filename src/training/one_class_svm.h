// One-class training. Schölkopf, Platt, Shawe-Taylor, Smola and Williamson, "Estimating the Support
// of a High-Dimensional Distribution", Neural Computation 13 (2001).
#pragma once

#include "training/trainer.h"

namespace zelsvm {

// The model's labels are 1, inside, and -1; every support vector belongs to the first.
template <typename T>
class OneClassSvm : public AbstractTrainer<T> {
 public:
  using AbstractTrainer<T>::AbstractTrainer;
  void train(GenericModel<T>& model, SvmData<T>& data) override;

 private:
  [[nodiscard]] T budget(const SvmData<T>& data) const;
};

}  // namespace zelsvm
