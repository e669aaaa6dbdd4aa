// The test that keeps overflowed results out of model files and predictions.
#pragma once

#include "zeldplus/zelsvm/data/model_header.h"
#include "zeldplus/zelsvm/model/generic_model.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Throws AppException naming the part of a model with this header that holds an infinity or a NaN.
template <typename T>
void requireFinite(const ModelHeader& header, const GenericModel<T>& model);

}  // namespace zelsvm::inline ZEL_PLATFORM
