#include "platform/machine_module.h"

#include "platform/cuda/machine/cuda_machine.h"

namespace {

// Never destroyed: the driver may be gone by the time that static objects are.
const zelsvm::Machine* open(int device) { return new zelsvm::CudaMachine(device); }

constexpr ZelsvmMachines machines = {ZELSVM_VERSION, sizeof(zelsvm::SolverTask),
                                     sizeof(zelsvm::DecisionTask), zelsvm::usableDeviceCount, open};

}  // namespace

extern "C" __attribute__((visibility("default"))) const ZelsvmMachines* zelsvmMachines() {
  return &machines;
}
