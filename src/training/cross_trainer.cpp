#include "training/cross_trainer.h"

#include <optional>

#include "base/errors.h"
#include "data/filtered_data.h"
#include "prediction/predictor.h"

namespace zelsvm {

template <typename T>
void SvmCrossTrainer<T>::evaluateAgainst(const SvmData<T>& data) {
  overall = std::make_unique<Evaluation>(context->problemKind, data);
}

template <typename T>
typename SvmCrossTrainer<T>::Measures SvmCrossTrainer<T>::measuresOf(const Evaluation& evaluation) {
  return {evaluation.evaluator().primaryMeasure(), evaluation.evaluator().secondaryMeasure()};
}

template <typename T>
void SvmCrossTrainer<T>::run(HostVector<T>& predictions, const SvmData<T>& data,
                             std::uint64_t folds) {
  if (data.sampleCount() == 0) return;
  foldMeasures.clear();
  const CountingSamples samples(data.weights(), data.sampleCount());
  const zel::IndexList<> permutation = shuffledSamples(samples.count());
  for (std::uint64_t f = 0; f < folds; ++f) {
    const Fold fold = samples.inAll(foldOf(permutation, f, folds), f, folds);
    if (fold.heldOut.size() != 0) runFold(predictions, data, fold);
  }
  if (overall) overall->evaluate(predictions);
}

template <typename T>
void SvmCrossTrainer<T>::runFold(HostVector<T>& predictions, const SvmData<T>& data,
                                 const Fold& fold) {
  if (fold.training.size() == 0) {
    if (overall) foldMeasures.push_back({0, 0});
    return;
  }
  FilteredData<T> trainingData(data, fold.training);
  FilteredData<T> heldOutData(data, fold.heldOut);
  FilteredVector<T> heldOutPredictions(predictions.size(), predictions.data(), fold.heldOut);
  std::optional<Evaluation> evaluation;
  if (overall) evaluation.emplace(context->problemKind, heldOutData);
  if (fold.training.size() == 1) {
    heldOutPredictions.set(0, trainingData.label(0));
    if (evaluation) evaluation->evaluate(heldOutPredictions);
  } else {
    predictFold(heldOutPredictions, trainingData, heldOutData, evaluation ? &*evaluation : nullptr);
  }
  if (evaluation) foldMeasures.push_back(measuresOf(*evaluation));
}

template <typename T>
void SvmCrossTrainer<T>::predictFold(HostVector<T>& heldOutPredictions, SvmData<T>& trainingData,
                                     const SvmData<T>& heldOutData, Evaluation* evaluation) {
  GenericModel<T> model;
  trainer.train(model, trainingData);
  GenericPredictor<T> predictor(*context, model);
  for (auto* handler : handlers) predictor.addHandler(*handler);
  if (evaluation != nullptr) predictor.addHandler(*evaluation);
  predictor.predict(heldOutPredictions, heldOutData.matrix());
}

template <typename T>
void SvmCrossTrainer<T>::collectResults(HostVector<T>& primary, HostVector<T>& secondary) const {
  if (!overall) throw zel::AppException("No evaluator has been configured for cross training.");
  if (primary.size() <= foldMeasures.size() || secondary.size() <= foldMeasures.size())
    throw zel::AppException("Insufficient buffer for evaluating the cross training.");
  const auto store = [&](std::uint64_t entry, const Measures& measures) {
    primary.set(entry, measures.primary);
    secondary.set(entry, measures.secondary);
  };
  store(0, measuresOf(*overall));
  for (std::uint64_t f = 0; f < foldMeasures.size(); ++f) store(f + 1, foldMeasures[f]);
}

template class SvmCrossTrainer<double>;

}  // namespace zelsvm
