// Evaluation as the last step of a prediction.
#pragma once

#include <memory>

#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/evaluator.h"
#include "zeldplus/zelsvm/model/prediction_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Compares the output with the data set's targets, which must outlive it.
template <typename T>
class GenericEvaluationHandler : public AbstractPredictionHandler<T> {
 public:
  GenericEvaluationHandler(ProblemKind kind, SvmData<T>& data) : data(&data) {
    if (kind == ProblemKind::regression)
      measures = std::make_unique<RegressionEvaluator<T>>();
    else
      measures = std::make_unique<ClassificationEvaluator<T>>();
  }

  void handle(HostVector<T>& output, const HostVector<T>& /*decisionValues*/,
              const GenericModel<T>& /*model*/) override {
    evaluate(output);
  }
  void evaluate(const HostVector<T>& output) { measures->evaluate(output, *data); }
  [[nodiscard]] const AbstractEvaluator<T>& evaluator() const { return *measures; }

 private:
  std::unique_ptr<AbstractEvaluator<T>> measures;
  SvmData<T>* data;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
