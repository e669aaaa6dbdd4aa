#include "platform/cuda/machine/cuda_sigmoid_sums.h"

#include "platform/cuda/kernels/device_context.h"
#include "platform/cuda/kernels/sigmoid_kernels.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/cuda/runtime/symbols.h"

namespace zelsvm {
namespace {

constexpr unsigned blockThreads = 128;

}  // namespace

CudaSigmoidSums::CudaSigmoidSums(DeviceTurns& turns)
    : SymbolUser(turns),
      firstLoss(1),
      firstHessian(1),
      lossLimit(zel::gridLimit(findSigmoidFunctionalKernel<double>, blockThreads)),
      hessianLimit(zel::gridLimit(findSigmoidHessianKernel<double>, blockThreads)) {}

void CudaSigmoidSums::assign(std::span<const double> newDecisionValues,
                             std::span<const double> newTargets,
                             std::span<const double> newWeights) {
  DeviceTurn turn(*this);
  decisionTexture.reset();
  targetTexture.reset();
  samples = static_cast<unsigned>(newDecisionValues.size());
  decisionValues.assign(newDecisionValues);
  targets.assign(newTargets);
  weights.assign(newWeights);
  isWeighted = !newWeights.empty();
  decisionTexture.emplace(decisionValues);
  targetTexture.emplace(targets);
  losses.resize(zel::gridSize(lossLimit, samples, blockThreads));
  hessians.resize(zel::gridSize(hessianLimit, samples, blockThreads));
  turn.publish();
}

void CudaSigmoidSums::publish() {
  // assign() has made both. NOLINTNEXTLINE(bugprone-unchecked-optional-access)
  const cudaTextureObject_t handles[] = {decisionTexture->handle(), targetTexture->handle()};
  zel::publishSymbol(zelsvm_tx_sigx, handles);
  zel::publishSymbol(zelsvm_sigw, isWeighted ? weights.data() : nullptr);
  zel::publishSymbol(zelsvm_reduction_sem, 0);
  zel::publishSymbol(zelsvm_sigmoid_sem, 0);
}

double CudaSigmoidSums::loss(double A, double B) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  zel::launch(findSigmoidFunctionalKernel<double>,
              {static_cast<unsigned>(losses.size()), blockThreads}, losses.data(), A, B, samples);
  losses.download(firstLoss.span());
  return firstLoss[0];
}

SigmoidHessian<double> CudaSigmoidSums::derivatives(double A, double B) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  zel::launch(findSigmoidHessianKernel<double>,
              {static_cast<unsigned>(hessians.size()), blockThreads}, hessians.data(), A, B,
              samples);
  hessians.download(firstHessian.span());
  return firstHessian[0];
}

}  // namespace zelsvm
