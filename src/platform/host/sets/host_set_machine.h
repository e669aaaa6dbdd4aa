// The working-set method's work on the processor.
#pragma once

#include <memory>

#include "platform/set_machine.h"

namespace zelsvm {

std::unique_ptr<SetMachine> makeHostSetMachine();

}  // namespace zelsvm
