// What a Model holds: the engine's model with the parameter record that it is used with.
#pragma once

#include <mutex>
#include <utility>
#include <vector>

#include "zeldplus/zelsvm/model/model_file.h"

namespace zelsvm::detail {

struct ModelState : LoadedModel<double> {
  explicit ModelState(LoadedModel<double>&& loaded) : LoadedModel(std::move(loaded)) {}

  std::mutex inUse;  // predictions use the context's library handles and the matrix's device copies
};

inline std::vector<double> toVector(const HostVector<double>& values) {
  return {values.data(), values.data() + values.size()};
}

}  // namespace zelsvm::detail
