#include "runs/scaled_runs.h"

#include "data/scaled_data.h"

namespace zelsvm {
namespace {

template <typename T>
void unscale(HostVector<T>& predictions, const SvmScale<T>& scale) {
  for (std::uint64_t i = 0; i < predictions.size(); ++i)
    predictions.set(i, scale.unscaledTarget(predictions[i]));
}

}  // namespace

template <typename T>
void fillScale(SvmScale<T>& scale, const SvmContext<T>& context, const SvmData<T>& data,
               const ScaleRanges& ranges) {
  const bool regression = context.problemKind == ProblemKind::regression;
  scale.setRanges(ranges.features, regression ? ranges.targets : zel::Interval{0, 0});
  scale.initialize(data);
}

template <typename T>
void crossValidateScaled(HostVector<T>& predictions, HostVector<T>& primary,
                         HostVector<T>& secondary, const SvmContext<T>& context,
                         SimpleData<T>& scaled, const SvmScale<T>& scale, std::uint64_t folds,
                         bool probability, Undecided undecided) {
  predictions.fill(0);
  primary.fill(0);
  secondary.fill(0);
  GenericProcessor<T> processor(context, undecided);
  processor.crossTrain(predictions, scaled, folds, probability);
  processor.collectResults(primary, secondary);
  for (std::uint64_t i = 0; i < primary.size(); ++i)
    primary.set(i, primary[i] * scale.varianceFactor());
  unscale(predictions, scale);
}

template <typename T>
ScaledPrediction<T> predictScaled(GenericProcessor<T>& processor, const SvmContext<T>& context,
                                  const GenericModel<T>& model, const SvmData<T>& data,
                                  bool probability) {
  ScaledData<T> scaled(data, model.scale, model.vectors().features());
  const std::uint64_t n = scaled.sampleCount();
  const bool perLabel = probability && context.problemKind == ProblemKind::classification;
  ScaledPrediction<T> result{HostVector<T>(n),
                             HostVector<T>(perLabel ? model.labels().size() * n : 0)};
  result.probabilities.fill(0);
  processor.predict(result.predictions, result.probabilities, model, scaled, probability);
  unscale(result.predictions, model.scale);
  return result;
}

template void fillScale(SvmScale<double>&, const SvmContext<double>&, const SvmData<double>&,
                        const ScaleRanges&);
template void crossValidateScaled(HostVector<double>&, HostVector<double>&, HostVector<double>&,
                                  const SvmContext<double>&, SimpleData<double>&,
                                  const SvmScale<double>&, std::uint64_t, bool, Undecided);
template ScaledPrediction<double> predictScaled(GenericProcessor<double>&,
                                                const SvmContext<double>&,
                                                const GenericModel<double>&, const SvmData<double>&,
                                                bool);

}  // namespace zelsvm
