#include "prediction/evaluation.h"

#include <cstdint>

namespace zelsvm {

template <typename T>
void ClassificationEvaluator<T>::evaluate(const HostVector<T>& predictions,
                                          const SvmData<T>& data) {
  const T n = data.totalWeight();
  if (n == 0) return;
  T correct = 0;
  for (std::uint64_t i = 0; i < data.sampleCount(); ++i)
    if (predictions[i] == data.label(i)) correct += data.weight(i);
  accuracy = correct * 100 / n;
}

template <typename T>
void RegressionEvaluator<T>::evaluate(const HostVector<T>& predictions, const SvmData<T>& data) {
  const T n = data.totalWeight();
  if (n == 0) return;
  T sumP = 0, sumT = 0, sumPT = 0, sumPP = 0, sumTT = 0, sumError = 0;
  for (std::uint64_t i = 0; i < data.sampleCount(); ++i) {
    const T w = data.weight(i);
    const T p = predictions[i];
    const T t = data.label(i);
    sumP += w * p;
    sumT += w * t;
    sumPT += w * (p * t);
    sumPP += w * (p * p);
    sumTT += w * (t * t);
    sumError += w * ((p - t) * (p - t));
  }
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
