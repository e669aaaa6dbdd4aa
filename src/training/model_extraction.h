// From a solver's multipliers to a model's members.
#pragma once

#include "data/svm_data.h"
#include "model/generic_model.h"
#include "training/trainer.h"

namespace zelsvm {

// Throws AppException unless 0 < vectors <= samples.
void requireVectorCount(std::uint64_t vectors, std::uint64_t samples);

// The model of a problem with these labels: the support vectors of the first, then those of the
// second, each in sample order.
template <typename T>
void extractTwoClass(GenericModel<T>& model, const SvmData<T>& data, const LabelPair& labels,
                     const SolvedProblem<T>& solved);

// The samples whose multiplier is not 0, in sample order; the multipliers' first half holds the
// differences of the two multipliers of each sample.
template <typename T>
void extractRegression(GenericModel<T>& model, const SvmData<T>& data,
                       const SolvedProblem<T>& solved);

}  // namespace zelsvm
