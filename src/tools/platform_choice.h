// Which machine runs.
#pragma once

#include <functional>

#include "platform/machine.h"

namespace zelsvm_main {

// The machine on a device; throws RuntimeException for a device that there is not.
using MachineChoice = std::function<const zelsvm::Machine&(int device)>;

// The platform named by the value of ZELSVM_PLATFORM: host, whose one device is the processor, or
// cuda. Null and the empty text leave the choice to us, and we take CUDA where its module is
// installed and finds a device. Throws AppException for an unknown platform and for a CUDA engine
// that is wanted by name and not installed or not fit to run.
MachineChoice choosePlatform(const char* wanted);

}  // namespace zelsvm_main
