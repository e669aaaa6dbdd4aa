// Measures of predictions against the truth.
#pragma once

#include "zeldplus/zelsvm/data/svm_data.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class AbstractEvaluator {
 public:
  virtual ~AbstractEvaluator() = default;
  // One prediction per sample; nothing changes for no samples.
  virtual void evaluate(const HostVector<T>& predictions, SvmData<T>& data) = 0;
  [[nodiscard]] virtual T primaryMeasure() const { return -1; }
  [[nodiscard]] virtual T secondaryMeasure() const { return -1; }
};

// Primary: percentage of predictions equal to their label.
template <typename T>
class ClassificationEvaluator : public AbstractEvaluator<T> {
 public:
  void evaluate(const HostVector<T>& predictions, SvmData<T>& data) override;
  [[nodiscard]] T primaryMeasure() const override { return accuracy; }

 private:
  T accuracy = 0;
};

// Primary: mean squared error. Secondary: the square of Pearson's correlation coefficient.
template <typename T>
class RegressionEvaluator : public AbstractEvaluator<T> {
 public:
  void evaluate(const HostVector<T>& predictions, SvmData<T>& data) override;
  [[nodiscard]] T primaryMeasure() const override { return meanSquaredError; }
  [[nodiscard]] T secondaryMeasure() const override { return squaredCorrelation; }

 private:
  T meanSquaredError = 0;
  T squaredCorrelation = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
