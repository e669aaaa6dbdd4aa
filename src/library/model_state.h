// What a Model holds: the engine's model with the parameter record that it is used with, and what
// only the library tells of it.
#pragma once

#include <zelsvm/zelsvm.h>

#include <memory>
#include <utility>
#include <vector>

#include "model/model_file.h"
#include "prediction/predictor_pool.h"

namespace zelsvm::detail {

struct ModelState : LoadedModel<double> {
  ModelState(LoadedModel<double>&& loaded, Parameters parameters)
      : LoadedModel(std::move(loaded)), parameters(std::move(parameters)) {}

  Parameters parameters;
  // The support vectors before they were scaled; null where they are as they were given, or where
  // nobody knows.
  std::unique_ptr<zelmag::AbstractMatrix<double>> givenVectors;
  mutable PredictorPool predictors;
};

// What a model from a text file tells of its parameters.
Parameters knownParameters(const LoadedModel<double>& loaded);

template <typename Vector>
auto toVector(const Vector& values) {
  return std::vector(values.data(), values.data() + values.size());
}

}  // namespace zelsvm::detail
