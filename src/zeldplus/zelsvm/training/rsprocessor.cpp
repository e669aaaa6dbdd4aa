#include "zeldplus/zelsvm/training/rsprocessor.h"

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/model/decision_check.h"
#include "zeldplus/zelsvm/model/rspredictor.h"
#include "zeldplus/zelsvm/training/finite_samples.h"
#include "zeldplus/zelsvm/training/generic_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

void refuseOneClassProbability(ProblemKind kind) {
  if (kind == ProblemKind::oneClass)
    throw zel::AppException("Probability output for one-class SVM is not supported.");
}

}  // namespace

template <typename T>
void GenericProcessor<T>::requireTrainable(SimpleData<T>& data, bool probability) const {
  if (context->problemKind == ProblemKind::classification) requireIntegerLabels(data.labels());
  if (probability) refuseOneClassProbability(context->problemKind);
  requireFiniteFeatures(data.matrix());
  if (context->problemKind == ProblemKind::regression) requireFiniteTargets(data.labels());
}

template <typename T>
GenericProbabilityTrainer<T>& GenericProcessor<T>::makeProbabilityTrainer() {
  probabilityTrainer = std::make_unique<GenericProbabilityTrainer<T>>(*context);
  return *probabilityTrainer;
}

template <typename T>
void GenericProcessor<T>::train(GenericModel<T>& model, SimpleData<T>& data, bool probability) {
  requireTrainable(data, probability);
  GenericTrainer<T> trainer(*context);
  model.probability = probability;
  if (probability) trainer.addHandler(makeProbabilityTrainer());
  trainer.train(model, data);
}

template <typename T>
void GenericProcessor<T>::crossTrain(HostVector<T>& predictions, SimpleData<T>& data,
                                     std::uint64_t folds, bool probability) {
  requireTrainable(data, probability);
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
                                  const GenericModel<T>& model, SvmData<T>& data,
                                  bool probability) {
  if (probability) {
    refuseOneClassProbability(context->problemKind);
    if (!model.probability)
      throw zel::AppException("The model does not contain probability parameters.");
  }
  GenericPredictor<T> predictor(*context, model);
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

}  // namespace zelsvm::inline ZEL_PLATFORM
