// Runs on data in their own units: scaled on the way in, results scaled back.
#pragma once

#include <cstdint>

#include "base/interval.h"
#include "data/svm_scale.h"
#include "runs/processor.h"

namespace zelsvm {

// (lower, upper); equal ends mean no scaling.
struct ScaleRanges {
  zel::Interval features;
  zel::Interval targets;  // of regressions only
};

// Takes the ranges and, from the data, their bounds.
template <typename T>
void fillScale(SvmScale<T>& scale, const SvmContext<T>& context, const SvmData<T>& data,
               const ScaleRanges& ranges);

// Cross-validation of data that the record has scaled. Predictions and measures (those of
// SvmCrossTrainer::collectResults; entries beyond become 0) are in unscaled units.
template <typename T>
void crossValidateScaled(HostVector<T>& predictions, HostVector<T>& primary,
                         HostVector<T>& secondary, const SvmContext<T>& context,
                         SimpleData<T>& scaled, const SvmScale<T>& scale, std::uint64_t folds,
                         bool probability, Undecided undecided = Undecided::keepsPrediction);

template <typename T>
struct ScaledPrediction {
  HostVector<T> predictions;
  HostVector<T> probabilities;  // one per label and sample, sample by sample, where asked for
};

// Scales the data, which have at least the model's features, as the model says, and predicts them.
// The processor, which has the same context, then has the measures, in scaled units.
template <typename T>
ScaledPrediction<T> predictScaled(GenericProcessor<T>& processor, const SvmContext<T>& context,
                                  const GenericModel<T>& model, const SvmData<T>& data,
                                  bool probability);

}  // namespace zelsvm
