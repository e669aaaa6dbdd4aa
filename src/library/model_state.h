// What a Model holds: the engine's model with the parameter record that it is used with.
#pragma once

#include <vector>

#include "zeldplus/zelsvm/model/model_file.h"

namespace zelsvm::detail {

struct ModelState : LoadedModel<double> {};

inline std::vector<double> toVector(const HostVector<double>& values) {
  return {values.data(), values.data() + values.size()};
}

}  // namespace zelsvm::detail
