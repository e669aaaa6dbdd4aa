#include "support/tested_machine.h"

#include "platform/cuda/machine/cuda_machine.h"

namespace zeltest {

const zelsvm::Machine& testedMachine() {
  static const zelsvm::CudaMachine machine(0);
  return machine;
}

}  // namespace zeltest
