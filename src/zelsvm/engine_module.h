// What the module with the CUDA engine offers to the tools.
#pragma once

#include <cstddef>

#include "zelsvm/options.h"

extern "C" {

// Both sides see the option object, so both come from one build: the same sources, compiler and
// standard library. Tools refuse a module whose version or object size is not theirs. No exception
// crosses the border, and each side has its own output, random and error state.
struct ZelsvmEngine {
  const char* version;
  std::size_t optionBytes;
  // Devices that the runtime finds; 0 also when it fails.
  int (*deviceCount)();
  // Runs the tool and reports its failure itself; returns the process's exit status.
  int (*run)(const zelsvm_opt::ZelSvmOpt* options);
};

// The module's only exported function.
const ZelsvmEngine* zelsvmEngine();
}
