#include "training/trainer.h"

#include "base/console.h"

namespace zelsvm {

void printSolution(const SmoSolution& solution) {
  zel::printMessage("obj = %g, rho = %g\nnSV = %lu, nBSV = %lu\n", solution.obj, solution.rho,
                    solution.nSV, solution.nBSV);
}

}  // namespace zelsvm
