// Finding and loading the module with the CUDA engine.
#pragma once

#include <string>

#include "platform/machine_module.h"

namespace zelsvm_main {

// The module's path: beside the program file or in ../lib/zelsvm from there; empty when it is in
// neither place.
std::string installedEngine();

// The module's entry, or null and a sentence that says why there is none.
struct LoadedEngine {
  const ZelsvmMachines* machines = nullptr;
  std::string refusal;
};

// Loads the installed module for the rest of the process.
LoadedEngine loadEngine();

}  // namespace zelsvm_main
