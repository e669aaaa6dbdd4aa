#include "platform/cuda/machine/cuda_machine.h"

#include <cuda_runtime.h>

#include "base/errors.h"
#include "platform/cuda/machine/cuda_predictor.h"
#include "platform/cuda/machine/cuda_sigmoid_sums.h"
#include "platform/cuda/machine/cuda_solver.h"
#include "platform/cuda/runtime/device.h"
#include "platform/cuda/sets/cuda_set_machine.h"

namespace zelsvm {
namespace {

// The oldest generation that the module has machine code for: capability 7.5.
constexpr int leastMajor = 7;
constexpr int leastMinor = 5;

bool hasCode(const cudaDeviceProp& properties) {
  return properties.major > leastMajor ||
         (properties.major == leastMajor && properties.minor >= leastMinor);
}

std::string refusal(const cudaDeviceProp& properties) {
  return std::string("The ") + properties.name + " GPU has compute capability " +
         std::to_string(properties.major) + "." + std::to_string(properties.minor) +
         ", and the CUDA engine needs " + std::to_string(leastMajor) + "." +
         std::to_string(leastMinor) + " or more.";
}

}  // namespace

int usableDeviceCount() {
  int count = 0;
  if (cudaGetDeviceCount(&count) != cudaSuccess) return 0;
  int usable = 0;
  for (int device = 0; device < count; ++device) {
    cudaDeviceProp properties{};
    if (cudaGetDeviceProperties(&properties, device) == cudaSuccess && hasCode(properties))
      ++usable;
  }
  return usable;
}

std::string deviceRefusal(int device) {
  cudaDeviceProp properties{};
  if (cudaGetDeviceProperties(&properties, device) != cudaSuccess || hasCode(properties)) return {};
  return refusal(properties);
}

CudaMachine::CudaMachine(int device) : turns(device) {
  turns.select();
  zel::checkDoublePrecision();
  cudaDeviceProp properties{};
  zel::zelSafeCall(cudaGetDeviceProperties(&properties, device));
  if (!hasCode(properties)) throw zel::AppException(refusal(properties).c_str());
  deviceName = properties.name;
}

std::unique_ptr<SolverMachine> CudaMachine::makeSolver(SVM_KERNEL kernel, bool twoGroups) const {
  turns.select();
  return std::make_unique<CudaSolver>(turns, libraries, kernel, twoGroups);
}

std::unique_ptr<SetMachine> CudaMachine::makeSetMachine() const {
  turns.select();
  return makeCudaSetMachine(turns, libraries);
}

std::unique_ptr<PredictorMachine> CudaMachine::makePredictor(const DecisionTask& task) const {
  turns.select();
  return std::make_unique<CudaPredictor>(turns, libraries, task);
}

std::unique_ptr<SigmoidSums> CudaMachine::makeSigmoidSums() const {
  turns.select();
  return std::make_unique<CudaSigmoidSums>(turns);
}

unsigned CudaMachine::solversAtOnce(const zelmag::AbstractMatrix<double>& /*samples*/,
                                    const KernelSettings& /*kernel*/,
                                    std::uint64_t /*cacheMegabytes*/,
                                    const PairLoad& /*load*/) const {
  return 1;
}

}  // namespace zelsvm
