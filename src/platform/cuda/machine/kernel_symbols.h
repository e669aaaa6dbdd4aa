// The device symbols that kernel functions read.
#pragma once

#include "platform/machine.h"

namespace zelsvm {

// Throws RuntimeException.
void publishKernel(const KernelSettings& kernel);

}  // namespace zelsvm
