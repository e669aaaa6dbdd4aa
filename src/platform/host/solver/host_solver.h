// What a solver asks of the machine, on the processor.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace zelsvm {

// twoGroups: the two signs are searched apart.
std::unique_ptr<SolverMachine> makeHostSolver(SVM_KERNEL kernel, bool twoGroups);

}  // namespace zelsvm
