#include "prediction/evaluation.h"

#include <cstdint>

namespace zelsvm {

template <typename T>
void ClassificationEvaluator<T>::evaluate(const HostVector<T>& predictions,
                                          const SvmData<T>& data) {
  const std::uint64_t n = data.sampleCount();
  if (n == 0) return;
  std::uint64_t correct = 0;
  for (std::uint64_t i = 0; i < n; ++i)
    if (predictions[i] == data.label(i)) ++correct;
  accuracy = static_cast<T>(correct) * 100 / static_cast<T>(n);
}

template <typename T>
void RegressionEvaluator<T>::evaluate(const HostVector<T>& predictions, const SvmData<T>& data) {
  const std::uint64_t samples = data.sampleCount();
  if (samples == 0) return;
  T sumP = 0, sumT = 0, sumPT = 0, sumPP = 0, sumTT = 0, sumError = 0;
  for (std::uint64_t i = 0; i < samples; ++i) {
    const T p = predictions[i];
    const T t = data.label(i);
    sumP += p;
    sumT += t;
    sumPT += p * t;
    sumPP += p * p;
    sumTT += t * t;
    sumError += (p - t) * (p - t);
  }
  const T n = static_cast<T>(samples);
  meanSquaredError = sumError / n;
  const T covariance = n * sumPT - sumT * sumP;
  squaredCorrelation =
      covariance * covariance / ((n * sumTT - sumT * sumT) * (n * sumPP - sumP * sumP));
}

template <typename T>
GenericEvaluationHandler<T>::GenericEvaluationHandler(ProblemKind kind, const SvmData<T>& data)
    : data(&data) {
  if (kind == ProblemKind::regression)
    measures = std::make_unique<RegressionEvaluator<T>>();
  else
    measures = std::make_unique<ClassificationEvaluator<T>>();
}

template <typename T>
void GenericEvaluationHandler<T>::handle(HostVector<T>& output,
                                         const HostVector<T>& /*decisionValues*/,
                                         const GenericModel<T>& /*model*/) {
  evaluate(output);
}

template class ClassificationEvaluator<double>;
template class RegressionEvaluator<double>;
template class GenericEvaluationHandler<double>;

}  // namespace zelsvm
