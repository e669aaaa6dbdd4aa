// The test that keeps overflowed results out of model files and predictions.
#pragma once

#include "files/models/model_header.h"
#include "model/generic_model.h"

namespace zelsvm {

// Throws AppException naming the part of a model with this header that holds an infinity or a NaN.
template <typename T>
void requireFinite(const ModelHeader& header, const GenericModel<T>& model);

}  // namespace zelsvm
