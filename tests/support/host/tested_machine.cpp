#include "support/tested_machine.h"

#include "platform/host/host_machine.h"

namespace zeltest {

const zelsvm::Machine& testedMachine() { return zelsvm::hostMachine(); }

}  // namespace zeltest
