// The working-set method's work on CUDA.
#pragma once

#include <memory>

#include "platform/cuda/machine/device_samples.h"
#include "platform/cuda/machine/device_turns.h"
#include "platform/set_machine.h"

namespace zelsvm {

// Both outlive it.
std::unique_ptr<SetMachine> makeCudaSetMachine(DeviceTurns& turns, LinearAlgebra& libraries);

}  // namespace zelsvm
