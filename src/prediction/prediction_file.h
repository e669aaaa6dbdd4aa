// The output file of a prediction.
#pragma once

#include <string>

#include "model/generic_model.h"

namespace zelsvm {

// One line per prediction: the prediction and, where probabilities (one per label and prediction,
// sample by sample) are given, the sample's in model label order, under a first line that names the
// labels. Numbers have six digits, or more where labels or the targets of a scaled regression need
// them. An empty probability vector stands for none. Throws AppException when the file is not
// complete.
template <typename T>
void writePredictions(const std::string& path, const HostVector<T>& predictions,
                      const HostVector<T>& probabilities, const GenericModel<T>& model);

}  // namespace zelsvm
