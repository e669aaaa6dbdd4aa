// What a Model holds: the engine's model with the parameter record that it is used with.
#pragma once

#include <utility>
#include <vector>

#include "model/model_file.h"
#include "prediction/predictor_pool.h"

namespace zelsvm::detail {

struct ModelState : LoadedModel<double> {
  explicit ModelState(LoadedModel<double>&& loaded) : LoadedModel(std::move(loaded)) {}

  mutable PredictorPool predictors;
};

template <typename Vector>
auto toVector(const Vector& values) {
  return std::vector(values.data(), values.data() + values.size());
}

}  // namespace zelsvm::detail
