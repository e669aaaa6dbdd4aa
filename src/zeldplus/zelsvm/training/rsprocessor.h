// Training, cross-validation and prediction with one parameter record.
#pragma once

#include <memory>
#include <vector>

#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/evaluation_handler.h"
#include "zeldplus/zelsvm/model/generic_model.h"
#include "zeldplus/zelsvm/model/multiclass_probability_estimator.h"
#include "zeldplus/zelsvm/model/multiclass_resolver.h"
#include "zeldplus/zelsvm/training/cross_trainer.h"
#include "zeldplus/zelsvm/training/generic_probability_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class GenericProcessor {
 public:
  // The context must outlive it.
  explicit GenericProcessor(const SvmContext<T>& context) : context(&context) {}
  virtual ~GenericProcessor() = default;

  // Fills the empty model, whose scale record is set. Classification labels are truncated in place.
  // Throws AppException for labels or parameters that cannot be trained.
  void train(GenericModel<T>& model, SimpleData<T>& data, bool probability);

  // Writes one prediction per sample of data, each by a model trained without its fold, and
  // measures them against its labels, which are treated as in train. Throws as train does.
  void crossTrain(HostVector<T>& predictions, SimpleData<T>& data, std::uint64_t folds,
                  bool probability);
  // Measures of the last cross-validation: SvmCrossTrainer::collectResults.
  void collectResults(HostVector<T>& primary, HostVector<T>& secondary) const {
    crossTrainer->collectResults(primary, secondary);
  }

  // Writes one prediction per sample of data, in scaled units, and evaluates them against its
  // labels. With probability it chooses labels by their probabilities, and unless the vector is
  // empty it writes them there, one per label and sample, sample by sample. Throws AppException for
  // a model without probability parameters.
  void predict(HostVector<T>& output, HostVector<T>& probabilities, const GenericModel<T>& model,
               SvmData<T>& data, bool probability);

  // Given the decision values of every prediction before labels are made of them; not owned.
  void addHandler(AbstractPredictionHandler<T>& handler) { handlers.push_back(&handler); }

  // Measures of the last prediction.
  [[nodiscard]] const AbstractEvaluator<T>& evaluator() const { return evaluation->evaluator(); }

 private:
  // Throws AppException for data or a request that no training can serve.
  void requireTrainable(SimpleData<T>& data, bool probability) const;
  GenericProbabilityTrainer<T>& makeProbabilityTrainer();
  // What turns decision values into labels.
  AbstractPredictionHandler<T>& chooseResolver(HostVector<T>& probabilities, bool probability);

  const SvmContext<T>* context;
  std::vector<AbstractPredictionHandler<T>*> handlers;
  // Sees the labels of the data that were predicted last, which may be gone.
  std::unique_ptr<GenericEvaluationHandler<T>> evaluation;
  std::unique_ptr<GenericProbabilityTrainer<T>> probabilityTrainer;
  std::unique_ptr<SvmCrossTrainer<T>> crossTrainer;
  std::unique_ptr<MulticlassProbabilityEstimator<T>> probabilityEstimator;
  BinaryProbabilityResolver<T> probabilityResolver;
  MulticlassResolver<T> resolver;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
