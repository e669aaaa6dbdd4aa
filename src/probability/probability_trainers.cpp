#include "probability/probability_trainers.h"

#include <cmath>
#include <numbers>

#include "training/cross_trainer.h"

namespace zelsvm {

template <typename T>
T laplaceScale(const HostVector<T>& residuals, std::span<const T> weights) {
  const auto weight = [&](std::uint64_t i) { return weights.empty() ? 1 : weights[i]; };
  T total = 0;
  T all = 0;
  for (std::uint64_t i = 0; i < residuals.size(); ++i) {
    total += weight(i) * residuals[i];
    all += weight(i);
  }
  const T limit = 5 * (std::numbers::sqrt2_v<T> * (total / all));
  T sum = 0;
  T inside = 0;
  for (std::uint64_t i = 0; i < residuals.size(); ++i) {
    if (!(residuals[i] < limit)) continue;
    sum += weight(i) * residuals[i];
    inside += weight(i);
  }
  return inside == 0 ? -1 : sum / inside;
}

template <typename T>
HostVector<T> AbstractProbabilityTrainer<T>::outOfFoldValues(
    const SvmData<T>& data, AbstractPredictionHandler<T>* resolver) const {
  HostVector<T> values(data.sampleCount());
  values.fill(0);
  SvmCrossTrainer<T> crossTrainer(*context);
  if (resolver != nullptr) crossTrainer.addPredictionHandler(*resolver);
  crossTrainer.run(values, data, probabilityFolds);
  return values;
}

template <typename T>
void BinaryProbabilityTrainer<T>::build(GenericModel<T>& model, SvmData<T>& data) {
  const HostVector<T> decisionValues = this->outOfFoldValues(data, &resolver);
  model.sigmoids.emplace(data.labelPair(), sigmoidFit.fit(decisionValues, data));
}

template <typename T>
void NumericProbabilityTrainer<T>::build(GenericModel<T>& model, SvmData<T>& data) {
  HostVector<T> residuals = this->outOfFoldValues(data, nullptr);
  for (std::uint64_t i = 0; i < residuals.size(); ++i)
    residuals.set(i, std::fabs(data.label(i) - residuals[i]));
  model.sigma = laplaceScale(residuals, data.weights());
}

template <typename T>
GenericProbabilityTrainer<T>::GenericProbabilityTrainer(const SvmContext<T>& context) {
  if (context.problemKind == ProblemKind::regression)
    trainer = std::make_unique<NumericProbabilityTrainer<T>>(context);
  else
    trainer = std::make_unique<BinaryProbabilityTrainer<T>>(context);
}

template double laplaceScale(const HostVector<double>&, std::span<const double>);
template class AbstractProbabilityTrainer<double>;
template class BinaryProbabilityTrainer<double>;
template class NumericProbabilityTrainer<double>;
template class GenericProbabilityTrainer<double>;

}  // namespace zelsvm
