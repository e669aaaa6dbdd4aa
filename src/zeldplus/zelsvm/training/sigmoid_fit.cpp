#include "zeldplus/zelsvm/training/sigmoid_fit.h"

#include <cmath>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/inc/zeltexture_v2.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/training/sigmoid_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned blockThreads = 128;
// What a sum's rounding may hide of the objective, relatively: near the solution steps gain less.
constexpr double roundingAllowance = 1e-14;

void resetCounters() {
  const unsigned zero = 0;
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_reduction_sem, &zero, sizeof zero));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_sigmoid_sem, &zero, sizeof zero));
}

}  // namespace

template <typename T>
SigmoidFit<T>::SigmoidFit(const SigmoidFitSettings& settings)
    : settings(settings),
      objectiveLimit(static_cast<unsigned>(
          zel::residentBlocks(findSigmoidFunctionalKernel<T>, blockThreads, 0))),
      hessianLimit(
          static_cast<unsigned>(zel::residentBlocks(findSigmoidHessianKernel<T>, blockThreads, 0))),
      objectiveHost(1, zel::MemoryKind::pinned),
      hessianHost(1, zel::MemoryKind::pinned) {}

template <typename T>
Sigmoid SigmoidFit<T>::fit(const HostVector<T>& decisionValues, const SvmData<T>& data) {
  const std::uint64_t n = decisionValues.size();
  samples = static_cast<unsigned>(n);
  resetCounters();
  targets.resize(n);
  const T start = smoothTargets(data);
  deviceDecisions.resize(n);
  deviceDecisions.copyFrom(decisionValues, 0, 0, n);
  deviceTargets.resize(n);
  deviceTargets.copyFrom(targets, 0, 0, n);
  const zel::LinearTexture<T> decisionTexture(deviceDecisions);
  const zel::LinearTexture<T> targetTexture(deviceTargets);
  const cudaTextureObject_t handles[] = {decisionTexture.handle(), targetTexture.handle()};
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_tx_sigx, handles, sizeof handles));
  objectiveBlocks.resize(zel::gridSize(objectiveLimit, n, blockThreads));
  hessianBlocks.resize(zel::gridSize(hessianLimit, n, blockThreads));
  return minimize(start);
}

// Fills the targets, which keep a distance from 0 and 1 that shrinks with the number of samples,
// and returns the B that is best for A = 0.
template <typename T>
T SigmoidFit<T>::smoothTargets(const SvmData<T>& data) {
  T positive = 0;
  for (unsigned i = 0; i < samples; ++i)
    if (data.sign(i) > 0) ++positive;
  const T negative = static_cast<T>(samples) - positive;
  const T high = (positive + 1) / (positive + 2);
  const T low = 1 / (negative + 2);
  for (unsigned i = 0; i < samples; ++i) targets.set(i, data.sign(i) > 0 ? high : low);
  return std::log((negative + 1) / (positive + 1));
}

template <typename T>
Sigmoid SigmoidFit<T>::minimize(T B) {
  Sigmoid sigmoid{0, B};
  T value = objective(sigmoid);
  for (std::uint32_t iteration = 0; iteration < settings.maxIterations; ++iteration) {
    const SigmoidHessian<T> current = derivatives(sigmoid);
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
    const T trialValue = objective(trial);
    const T decrease = settings.epsilon * 10 * length * step.slope;
    if (trialValue < value + decrease + allowance) {
      sigmoid = trial;
      value = trialValue;
      return;
    }
  }
  throw zel::AppException("Line search failure in binary probability estimate.");
}

template <typename T>
T SigmoidFit<T>::objective(const Sigmoid& sigmoid) {
  zel::launch(findSigmoidFunctionalKernel<T>,
              {static_cast<unsigned>(objectiveBlocks.size()), blockThreads}, objectiveBlocks.data(),
              sigmoid.A, sigmoid.B, samples);
  objectiveHost.copyFrom(objectiveBlocks, 0, 0, 1);
  return objectiveHost[0];
}

template <typename T>
SigmoidHessian<T> SigmoidFit<T>::derivatives(const Sigmoid& sigmoid) {
  zel::launch(findSigmoidHessianKernel<T>,
              {static_cast<unsigned>(hessianBlocks.size()), blockThreads}, hessianBlocks.data(),
              sigmoid.A, sigmoid.B, samples);
  hessianHost.copyFrom(hessianBlocks, 0, 0, 1);
  return hessianHost[0];
}

template class SigmoidFit<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
