// What a module with a machine offers to the tools.
#pragma once

#include <cstddef>

#include "platform/machine.h"

extern "C" {

// Both sides use the classes of platform/machine.h, so both come from one build: the same sources,
// compiler and standard library. Tools refuse a module whose version or record sizes are not
// theirs. Exceptions cross the border, as the standard library tells their types by name.
struct ZelsvmMachines {
  const char* version;
  std::size_t solverTaskBytes;
  std::size_t decisionTaskBytes;
  // Devices that the module has code for; 0 also where the runtime fails.
  int (*deviceCount)();
  // The machine on a device, which stays until the process ends. Throws RuntimeException for a
  // device that there is not, AppException for one that the module has no code for.
  const zelsvm::Machine* (*open)(int device);
};

// The module's only exported function.
const ZelsvmMachines* zelsvmMachines();
}
