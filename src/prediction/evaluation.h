// Measures of predictions against the truth.
#pragma once

#include <memory>

#include "data/svm_data.h"
#include "parameters/svm_context.h"
#include "prediction/prediction_handlers.h"

namespace zelsvm {

template <typename T>
class AbstractEvaluator {
 public:
  virtual ~AbstractEvaluator() = default;
  // One prediction per sample, which counts by its weight; nothing changes for no samples.
  virtual void evaluate(const HostVector<T>& predictions, const SvmData<T>& data) = 0;
  [[nodiscard]] virtual T primaryMeasure() const { return -1; }
  [[nodiscard]] virtual T secondaryMeasure() const { return -1; }
};

// Primary: percentage of predictions equal to their label.
template <typename T>
class ClassificationEvaluator : public AbstractEvaluator<T> {
 public:
  void evaluate(const HostVector<T>& predictions, const SvmData<T>& data) override;
  [[nodiscard]] T primaryMeasure() const override { return accuracy; }

 private:
  T accuracy = 0;
};

// Primary: mean squared error. Secondary: the square of Pearson's correlation coefficient.
template <typename T>
class RegressionEvaluator : public AbstractEvaluator<T> {
 public:
  void evaluate(const HostVector<T>& predictions, const SvmData<T>& data) override;
  [[nodiscard]] T primaryMeasure() const override { return meanSquaredError; }
  [[nodiscard]] T secondaryMeasure() const override { return squaredCorrelation; }

 private:
  T meanSquaredError = 0;
  T squaredCorrelation = 0;
};

// Evaluation as the last step of a prediction: compares the output with the data set's targets,
// which must outlive it.
template <typename T>
class GenericEvaluationHandler : public AbstractPredictionHandler<T> {
 public:
  GenericEvaluationHandler(ProblemKind kind, const SvmData<T>& data);

  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;
  void evaluate(const HostVector<T>& output) { measures->evaluate(output, *data); }
  [[nodiscard]] const AbstractEvaluator<T>& evaluator() const { return *measures; }

 private:
  std::unique_ptr<AbstractEvaluator<T>> measures;
  const SvmData<T>* data;
};

}  // namespace zelsvm
