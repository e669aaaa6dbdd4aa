// From a solver's multipliers to a model's members.
#pragma once

#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/engine/smo_records.h"
#include "zeldplus/zelsvm/model/generic_model.h"
#include "zeldplus/zelsvm/training/trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Throws AppException unless 0 < vectors <= samples.
void requireVectorCount(std::uint64_t vectors, std::uint64_t samples);

// The support vectors of the first label, then those of the second, each in sample order. A pair
// view of one-against-one training takes over the multipliers instead and the model stays as it is.
template <typename T>
void extractTwoClass(GenericModel<T>& model, SvmData<T>& data, SolverProblem<T>&& problem,
                     const SmoSolution& solution);

// The samples whose multiplier is not 0, in sample order; problem.alpha holds the differences of
// the two multipliers of each sample in its first half.
template <typename T>
void extractRegression(GenericModel<T>& model, SvmData<T>& data, const SolverProblem<T>& problem,
                       const SmoSolution& solution);

}  // namespace zelsvm::inline ZEL_PLATFORM
