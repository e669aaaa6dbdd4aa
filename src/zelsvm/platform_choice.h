// Which engine runs.
#pragma once

#include "zelsvm/engine_module.h"

namespace zelsvm_main::inline ZEL_PLATFORM {

// The CUDA engine, or null for the host's: the one named by the value of ZELSVM_PLATFORM. Null and
// the empty text leave the choice to us, and we take the CUDA engine where it is installed and
// finds a device. Throws AppException for an unknown platform and for a CUDA engine that is wanted
// by name and not installed or not fit to run.
const ZelsvmEngine* chooseEngine(const char* wanted);

}  // namespace zelsvm_main::inline ZEL_PLATFORM
