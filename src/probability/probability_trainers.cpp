#include "probability/probability_trainers.h"

#include <cmath>
#include <numbers>

#include "training/cross_trainer.h"

namespace zelsvm {

template <typename T>
T laplaceScale(const HostVector<T>& residuals) {
  const std::uint64_t n = residuals.size();
  T total = 0;
  for (std::uint64_t i = 0; i < n; ++i) total += residuals[i];
  const T limit = 5 * (std::numbers::sqrt2_v<T> * (total / static_cast<T>(n)));
  T sum = 0;
  std::uint64_t count = 0;
  for (std::uint64_t i = 0; i < n; ++i) {
    if (!(residuals[i] < limit)) continue;
    sum += residuals[i];
    ++count;
  }
  return count == 0 ? -1 : sum / static_cast<T>(count);
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
  model.sigma = laplaceScale(residuals);
}

template <typename T>
GenericProbabilityTrainer<T>::GenericProbabilityTrainer(const SvmContext<T>& context) {
  if (context.problemKind == ProblemKind::regression)
    trainer = std::make_unique<NumericProbabilityTrainer<T>>(context);
  else
    trainer = std::make_unique<BinaryProbabilityTrainer<T>>(context);
}

template double laplaceScale(const HostVector<double>&);
template class AbstractProbabilityTrainer<double>;
template class BinaryProbabilityTrainer<double>;
template class NumericProbabilityTrainer<double>;
template class GenericProbabilityTrainer<double>;

}  // namespace zelsvm
