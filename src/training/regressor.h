// Regression with two multipliers per sample: i for targets above the prediction, i + n for those
// below. Smola and Schölkopf, "A Tutorial on Support Vector Regression", Statistics and Computing
// 14 (2004).
#pragma once

#include "training/trainer.h"

namespace zelsvm {

// Epsilon-insensitive regression.
template <typename T>
class CoreSvmRegressor : public AbstractTrainer<T> {
 public:
  using AbstractTrainer<T>::AbstractTrainer;
  void train(GenericModel<T>& model, SvmData<T>& data) override;
};

// Nu regression: nu bounds the share of the samples' weight outside the tube, whose width follows.
template <typename T>
class NuSvmRegressor : public AbstractTrainer<T> {
 public:
  using AbstractTrainer<T>::AbstractTrainer;
  void train(GenericModel<T>& model, SvmData<T>& data) override;
};

}  // namespace zelsvm
