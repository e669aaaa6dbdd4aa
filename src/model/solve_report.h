// How the solve of a label pair went, or the one solve of other formulations.
#pragma once

#include <cstdint>

#include "rules/smo_records.h"

namespace zelsvm {

struct SolveReport {
  std::uint64_t iterations = 0;
  bool isConverged = false;  // within the tolerance
  double gap = 0;            // the largest violation that is left
  double objective = 0;      // as it is printed
  double seconds = 0;
};

inline SolveReport reportOf(const SmoSolution& solution) {
  return {solution.iterations, solution.isConverged, solution.gap, solution.obj, solution.seconds};
}

}  // namespace zelsvm
