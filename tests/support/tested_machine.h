// The machine under test.
#pragma once

#include "platform/machine.h"

namespace zeltest {

const zelsvm::Machine& testedMachine();

}  // namespace zeltest
