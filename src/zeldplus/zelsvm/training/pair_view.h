// One label pair of a one-against-one training, with its solution.
#pragma once

#include <utility>

#include "zeldplus/zelsvm/data/multiclass_data.h"
#include "zeldplus/zelsvm/engine/smo_records.h"

namespace zelsvm::inline ZEL_PLATFORM {

// After its training it holds one multiplier per sample, those of the first label first.
template <typename T>
class PairView : public MulticlassData<T> {
 public:
  using MulticlassData<T>::MulticlassData;

  void takeSolution(HostVector<T>&& newAlpha, const SmoSolution& newSolution) {
    multipliers = std::move(newAlpha);
    result = newSolution;
  }
  [[nodiscard]] const HostVector<T>& alpha() const { return multipliers; }
  [[nodiscard]] const SmoSolution& solution() const { return result; }

 private:
  HostVector<T> multipliers;
  SmoSolution result;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
