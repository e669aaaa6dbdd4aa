#include "probability/sigmoid_fit.h"

#include <cmath>

#include "base/errors.h"
#include "platform/portable_functions.h"

namespace zelsvm {
namespace {

// Relative rounding error of the objective's sums: near the solution steps gain less than that.
constexpr double roundingAllowance = 1e-14;

}  // namespace

template <typename T>
Sigmoid SigmoidFit<T>::fit(const HostVector<T>& decisionValues, const SvmData<T>& data) {
  const std::uint64_t n = decisionValues.size();
  targets.resize(n);
  const T start = smoothTargets(data);
  sums->assign({decisionValues.data(), n}, {targets.data(), n}, data.weights());
  return minimize(start);
}

// Fills the targets, which keep a distance from 0 and 1 that shrinks with the samples' weight,
// and returns the B that is best for A = 0.
template <typename T>
T SigmoidFit<T>::smoothTargets(const SvmData<T>& data) {
  const std::uint64_t samples = targets.size();
  T positive = 0;
  T negative = 0;
  for (std::uint64_t i = 0; i < samples; ++i)
    (data.sign(i) > 0 ? positive : negative) += data.weight(i);
  const T high = (positive + 1) / (positive + 2);
  const T low = 1 / (negative + 2);
  for (std::uint64_t i = 0; i < samples; ++i) targets.set(i, data.sign(i) > 0 ? high : low);
  return portableLog((negative + 1) / (positive + 1));
}

template <typename T>
Sigmoid SigmoidFit<T>::minimize(T B) {
  Sigmoid sigmoid{0, B};
  T value = sums->loss(sigmoid.A, sigmoid.B);
  for (std::uint32_t iteration = 0; iteration < settings.maxIterations; ++iteration) {
    const SigmoidHessian<T> current = sums->derivatives(sigmoid.A, sigmoid.B);
    if (std::fabs(current.g1) < settings.epsilon && std::fabs(current.g2) < settings.epsilon)
      return sigmoid;
    searchLine(sigmoid, value, newtonStep(current));
  }
  throw zel::AppException("Non-convergence in binary probability estimate.");
}

template <typename T>
typename SigmoidFit<T>::Step SigmoidFit<T>::newtonStep(const SigmoidHessian<T>& derivatives) const {
  const auto [g1, g2, h11, h21, h22] = derivatives;
  const T a = h11 + settings.ridge;
  const T b = h22 + settings.ridge;
  const T determinant = b * a - h21 * h21;
  return {(h21 * g2 - b * g1) / determinant, (h21 * g1 - a * g2) / determinant,
          (2 * h21 * g1 * g2 - b * g1 * g1 - a * g2 * g2) / determinant};
}

template <typename T>
void SigmoidFit<T>::searchLine(Sigmoid& sigmoid, T& value, const Step& step) {
  const T allowance = roundingAllowance * std::fabs(value);
  for (T length = 1; length >= settings.minStep; length *= 0.5) {
    const Sigmoid trial{sigmoid.A + length * step.dA, sigmoid.B + length * step.dB};
    const T trialValue = sums->loss(trial.A, trial.B);
    const T decrease = settings.epsilon * 10 * length * step.slope;
    if (trialValue < value + decrease + allowance) {
      sigmoid = trial;
      value = trialValue;
      return;
    }
  }
  throw zel::AppException("Line search failure in binary probability estimate.");
}

template class SigmoidFit<double>;

}  // namespace zelsvm
