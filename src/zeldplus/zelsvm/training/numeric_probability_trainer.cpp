#include "zeldplus/zelsvm/training/numeric_probability_trainer.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
T laplaceScale(const HostVector<T>& residuals) {
  const std::uint64_t n = residuals.size();
  T total = 0;
  for (std::uint64_t i = 0; i < n; ++i) total += residuals[i];
  const T limit = 5 * (std::numbers::sqrt2_v<T> * (total / static_cast<T>(n)));
  T sum = 0;
  std::uint64_t count = 0;
  for (std::uint64_t i = 0; i < n; ++i) {
    if (!(residuals[i] < limit)) continue;
    sum += residuals[i];
    ++count;
  }
  return count == 0 ? -1 : sum / static_cast<T>(count);
}

template <typename T>
void NumericProbabilityTrainer<T>::build(GenericModel<T>& model, SvmData<T>& data) {
  HostVector<T> residuals = outOfFoldValues<T>(*context, data, nullptr);
  for (std::uint64_t i = 0; i < residuals.size(); ++i)
    residuals.set(i, std::fabs(data.label(i) - residuals[i]));
  model.sigma = laplaceScale(residuals);
}

template double laplaceScale(const HostVector<double>&);
template class NumericProbabilityTrainer<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
