// A CUDA device as a machine.
#pragma once

#include "platform/cuda/machine/device_samples.h"
#include "platform/cuda/machine/device_turns.h"
#include "platform/machine.h"

namespace zelsvm {

// Devices that the engine has code for; 0 also where the runtime fails.
int usableDeviceCount();

// Says why the engine has no code for a device; empty where it has, and for a device that does not
// exist.
std::string deviceRefusal(int device);

class CudaMachine : public Machine {
 public:
  // Throws RuntimeException for a device that there is not, AppException for one that the engine
  // has no code for.
  explicit CudaMachine(int device);

  [[nodiscard]] std::string name() const override { return deviceName; }
  [[nodiscard]] std::unique_ptr<SolverMachine> makeSolver(SVM_KERNEL kernel,
                                                          bool twoGroups) const override;
  [[nodiscard]] std::unique_ptr<SetMachine> makeSetMachine() const override;
  [[nodiscard]] std::unique_ptr<PredictorMachine> makePredictor(
      const DecisionTask& task) const override;
  [[nodiscard]] std::unique_ptr<SigmoidSums> makeSigmoidSums() const override;
  // The device works on one thing at a time.
  [[nodiscard]] unsigned solversAtOnce(const zelmag::AbstractMatrix<double>& samples,
                                       const KernelSettings& kernel, std::uint64_t cacheMegabytes,
                                       const PairLoad& load) const override;

 private:
  std::string deviceName;
  mutable DeviceTurns turns;
  mutable LinearAlgebra libraries;
};

}  // namespace zelsvm
