// The processor as a machine.
#pragma once

#include "platform/machine.h"

namespace zelsvm {

const Machine& hostMachine();

}  // namespace zelsvm
