#include "runs/processor.h"

#include <string>

#include "base/errors.h"
#include "base/numbers.h"
#include "base/output/console.h"
#include "prediction/prediction_handlers.h"
#include "prediction/predictor.h"
#include "probability/crowded_label.h"
#include "runs/finite_samples.h"
#include "training/generic_trainer.h"

namespace zelsvm {
namespace {

void refuseOneClassProbability(ProblemKind kind) {
  if (kind == ProblemKind::oneClass)
    throw zel::AppException("Probability output for one-class SVM is not supported.");
}

}  // namespace

template <typename T>
void GenericProcessor<T>::requireTrainable(SimpleData<T>& data, bool probability) const {
  if (context->problemKind == ProblemKind::classification)
    context->anyLabels ? requireFiniteLabels(data.labels()) : requireIntegerLabels(data.labels());
  if (probability) refuseOneClassProbability(context->problemKind);
  requireFiniteFeatures(data.matrix());
  if (context->problemKind == ProblemKind::regression) requireFiniteTargets(data.labels());
}

template <typename T>
void GenericProcessor<T>::requirePredictable(const GenericModel<T>& model, bool probability) const {
  if (!probability) return;
  refuseOneClassProbability(context->problemKind);
  if (!model.probability)
    throw zel::AppException("The model does not contain probability parameters.");
}

template <typename T>
void GenericProcessor<T>::warnOfCrowdedLabel(const SvmData<T>& data, std::uint64_t folds) const {
  if (context->problemKind != ProblemKind::classification) return;
  const auto found = findCrowdedLabel(data, folds);
  if (found)
    zel::warn("label " + zel::exactText(found->label) +
              " has too few samples for the five folds of -b 1: one fold holds all of them (" +
              std::to_string(found->samples) + ")");
}

template <typename T>
GenericProbabilityTrainer<T>& GenericProcessor<T>::makeProbabilityTrainer() {
  probabilityTrainer = std::make_unique<GenericProbabilityTrainer<T>>(*context);
  return *probabilityTrainer;
}

template <typename T>
void GenericProcessor<T>::train(GenericModel<T>& model, SimpleData<T>& data, bool probability) {
  requireTrainable(data, probability);
  if (probability) warnOfCrowdedLabel(data, 0);
  GenericTrainer<T> trainer(*context);
  model.probability = probability;
  if (probability) trainer.addHandler(makeProbabilityTrainer());
  trainer.train(model, data);
}

template <typename T>
void GenericProcessor<T>::crossTrain(HostVector<T>& predictions, SimpleData<T>& data,
                                     std::uint64_t folds, bool probability) {
  requireTrainable(data, probability);
  if (probability) warnOfCrowdedLabel(data, folds);
  crossTrainer = std::make_unique<SvmCrossTrainer<T>>(*context);
  crossTrainer->evaluateAgainst(data);
  // A regression's predictions need no resolver and do not depend on the scale of their residuals.
  if (context->problemKind != ProblemKind::regression) {
    if (probability) crossTrainer->addBuildHandler(makeProbabilityTrainer());
    crossTrainer->addPredictionHandler(
        probability ? static_cast<AbstractPredictionHandler<T>&>(probabilityResolver) : resolver);
  }
  crossTrainer->run(predictions, data, folds);
}

template <typename T>
void GenericProcessor<T>::predict(HostVector<T>& output, HostVector<T>& probabilities,
                                  const GenericModel<T>& model, const SvmData<T>& data,
                                  bool probability) {
  requirePredictable(model, probability);
  auto predictor = keptPredictor != nullptr ? GenericPredictor<T>(*context, model, *keptPredictor)
                                            : GenericPredictor<T>(*context, model);
  DecisionCheck<T> check;
  predictor.addHandler(check);
  for (auto* handler : handlers) predictor.addHandler(*handler);
  if (context->problemKind != ProblemKind::regression)
    predictor.addHandler(chooseResolver(probabilities, probability));
  evaluation = std::make_unique<GenericEvaluationHandler<T>>(context->problemKind, data);
  predictor.addHandler(*evaluation);
  predictor.predict(output, data.matrix());
}

template <typename T>
AbstractPredictionHandler<T>& GenericProcessor<T>::chooseResolver(HostVector<T>& probabilities,
                                                                  bool probability) {
  if (!probability) return resolver;
  if (probabilities.size() == 0) return probabilityResolver;
  probabilityEstimator = std::make_unique<MulticlassProbabilityEstimator<T>>(probabilities);
  return *probabilityEstimator;
}

template class GenericProcessor<double>;

}  // namespace zelsvm
