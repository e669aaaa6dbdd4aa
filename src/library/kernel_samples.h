// Samples given by their kernel values: whether they suit a training or a model, and the engine's
// view of them.
#pragma once

#include <cstdint>
#include <memory>

#include "library/rows.h"
#include "model/generic_model.h"

namespace zelsvm::detail {

// Of a training. Throws AppException for kernel values without the precomputed kernel or the other
// way round, and for parameters or shapes that do not go with it.
void requireKernelFits(const Rows& rows, const Parameters& parameters);

// Square kernel values to train on.
std::unique_ptr<zelmag::AbstractMatrix<double>> trainingKernel(const Rows& rows);

// Kernel values to predict with this model. Throws AppException for columns that are not what they
// are said to be.
std::unique_ptr<zelmag::AbstractMatrix<double>> testKernel(const Rows& rows,
                                                           const GenericModel<double>& model);

// A trained model goes on without the kernel values of its training.
void releaseKernel(GenericModel<double>& model);

}  // namespace zelsvm::detail
