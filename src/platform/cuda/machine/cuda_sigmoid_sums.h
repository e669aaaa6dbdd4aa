// The sums of a sigmoid fit on CUDA.
#pragma once

#include <optional>

#include "platform/cuda/machine/device_turns.h"
#include "platform/cuda/runtime/device_vector.h"
#include "platform/cuda/runtime/texture.h"
#include "platform/machine.h"

namespace zelsvm {

class CudaSigmoidSums : public SigmoidSums, private SymbolUser {
 public:
  // It outlives this.
  explicit CudaSigmoidSums(DeviceTurns& turns);

  void assign(std::span<const double> decisionValues, std::span<const double> targets,
              std::span<const double> weights) override;
  double loss(double A, double B) override;
  SigmoidHessian<double> derivatives(double A, double B) override;

 private:
  void publish() override;

  unsigned samples = 0;
  zel::DeviceVector<double> decisionValues;
  zel::DeviceVector<double> targets;
  zel::DeviceVector<double> weights;
  bool isWeighted = false;
  std::optional<zel::LinearTexture<double>> decisionTexture;
  std::optional<zel::LinearTexture<double>> targetTexture;
  zel::DeviceVector<double> losses;  // per block of a launch; entry 0 is the sum
  zel::DeviceVector<SigmoidHessian<double>> hessians;
  zel::PinnedVector<double> firstLoss;
  zel::PinnedVector<SigmoidHessian<double>> firstHessian;
  unsigned lossLimit;
  unsigned hessianLimit;
};

}  // namespace zelsvm
