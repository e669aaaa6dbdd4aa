#include "zeldplus/zelsvm/training/rsprocessor.h"

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/model/multiclass_probability_estimator.h"
#include "zeldplus/zelsvm/model/rspredictor.h"
#include "zeldplus/zelsvm/training/generic_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

void refuseOneClassProbability(ProblemKind kind) {
  if (kind == ProblemKind::oneClass)
    throw zel::AppException("Probability output for one-class SVM is not supported.");
}

}  // namespace

template <typename T>
void GenericProcessor<T>::train(GenericModel<T>& model, SimpleData<T>& data, bool probability) {
  if (context->problemKind == ProblemKind::classification) requireIntegerLabels(data.labels());
  if (probability) refuseOneClassProbability(context->problemKind);
  GenericTrainer<T> trainer(*context);
  if (probability) {
    model.probability = true;
    probabilityTrainer = std::make_unique<GenericProbabilityTrainer<T>>(*context);
    trainer.addHandler(*probabilityTrainer);
  }
  trainer.train(model, data);
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
