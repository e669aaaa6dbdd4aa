// Training, cross-validation and prediction with one parameter record.
#pragma once

#include <memory>
#include <vector>

#include "model/generic_model.h"
#include "parameters/svm_context.h"
#include "prediction/evaluation.h"
#include "prediction/prediction_handlers.h"
#include "probability/probability_resolvers.h"
#include "probability/probability_trainers.h"
#include "training/cross_trainer.h"

namespace zelsvm {

template <typename T>
class GenericProcessor {
 public:
  // The context must outlive it.
  explicit GenericProcessor(const SvmContext<T>& context,
                            Undecided undecided = Undecided::keepsPrediction)
      : context(&context), resolver(undecided) {}
  virtual ~GenericProcessor() = default;

  // What train and predict check first. Throws AppException for data, a model or a request that
  // they cannot serve; classification labels are truncated in place.
  void requireTrainable(SimpleData<T>& data, bool probability) const;
  void requirePredictable(const GenericModel<T>& model, bool probability) const;

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
               const SvmData<T>& data, bool probability);

  // Predictions of the model that the next call of predict is given are made by this machine's
  // predictor, which has its decision task; not owned.
  void usePredictor(PredictorMachine& machine) { keptPredictor = &machine; }

  // Given the decision values of every prediction before labels are made of them; not owned.
  void addHandler(AbstractPredictionHandler<T>& handler) { handlers.push_back(&handler); }

  // Measures of the last prediction.
  [[nodiscard]] const AbstractEvaluator<T>& evaluator() const { return evaluation->evaluator(); }

 private:
  // Where probabilities cannot be fitted, as a fold holds all samples of a label. Fewer than 2
  // folds stand for a training.
  void warnOfCrowdedLabel(const SvmData<T>& data, std::uint64_t folds) const;
  GenericProbabilityTrainer<T>& makeProbabilityTrainer();
  // What turns decision values into labels.
  AbstractPredictionHandler<T>& chooseResolver(HostVector<T>& probabilities, bool probability);

  const SvmContext<T>* context;
  std::vector<AbstractPredictionHandler<T>*> handlers;
  PredictorMachine* keptPredictor = nullptr;
  // Sees the labels of the data that were predicted last, which may be gone.
  std::unique_ptr<GenericEvaluationHandler<T>> evaluation;
  std::unique_ptr<GenericProbabilityTrainer<T>> probabilityTrainer;
  std::unique_ptr<SvmCrossTrainer<T>> crossTrainer;
  std::unique_ptr<MulticlassProbabilityEstimator<T>> probabilityEstimator;
  BinaryProbabilityResolver<T> probabilityResolver;
  MulticlassResolver<T> resolver;
};

}  // namespace zelsvm
