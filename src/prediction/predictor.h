// Decision values f(x) = sum_k c_k K(s_k, x) - rho of test samples, and what is made of them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/vectors.h"
#include "parameters/svm_context.h"
#include "platform/machine.h"
#include "prediction/prediction_handlers.h"

namespace zelsvm {

// What a model's predictor is made of. Throws AppException for a model without rho or support
// vectors.
template <typename T>
DecisionTask decisionTask(const SvmContext<T>& context, const GenericModel<T>& model);

template <typename T>
class GenericPredictor {
 public:
  // Both must outlive it. Throws as decisionTask does.
  GenericPredictor(const SvmContext<T>& context, const GenericModel<T>& model);
  // With a predictor of the model's decision task, which must outlive it, too.
  GenericPredictor(const SvmContext<T>& context, const GenericModel<T>& model,
                   PredictorMachine& machine);
  virtual ~GenericPredictor() = default;

  // Called in order with the output vector and the decision values; not owned.
  void addHandler(AbstractPredictionHandler<T>& handler) { handlers.push_back(&handler); }

  // output has one entry per test sample. Throws RuntimeException for a test matrix with fewer
  // columns than the support vectors have, AppException for one of features where the model's
  // kernel is precomputed.
  void predict(HostVector<T>& output, const zelmag::AbstractMatrix<T>& test);

 private:
  // Calls take(first sample, count, values) with each block's decision values, function by
  // function.
  template <typename Take>
  void forEachBlock(const zelmag::AbstractMatrix<T>& test, Take take);
  void predictValues(HostVector<T>& output, const zelmag::AbstractMatrix<T>& test);
  void predictPairs(HostVector<T>& output, const zelmag::AbstractMatrix<T>& test);

  const SvmContext<T>* context;
  const GenericModel<T>* model;
  std::uint64_t functions;
  std::vector<AbstractPredictionHandler<T>*> handlers;
  std::unique_ptr<PredictorMachine> ownMachine;
  PredictorMachine* machine;
};

}  // namespace zelsvm
