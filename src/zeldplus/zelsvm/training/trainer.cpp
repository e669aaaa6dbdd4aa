#include "zeldplus/zelsvm/training/trainer.h"

#include "zeldplus/inc/zelconsole.h"

namespace zelsvm::inline ZEL_PLATFORM {

void printSolution(const SmoSolution& solution) {
  zel::printMessage("obj = %g, rho = %g\nnSV = %lu, nBSV = %lu\n", solution.obj, solution.rho,
                    solution.nSV, solution.nBSV);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
