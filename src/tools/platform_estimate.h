// How long a run would take on the processor and on a GPU, guessed from what its files look like
// before they are read. A rough figure is enough: it decides where we choose the machine ourselves.
#pragma once

#include <cstdint>

#include "tools/options.h"

namespace zelsvm_main {

struct PlannedRun {
  double samples = 0;          // of the data
  double valuesPerSample = 0;  // that are stored
  double labels = 1;           // 1: one solve of all samples
  double vectors = 0;          // of a prediction's model; 0 for a training
  double repeats = 1;          // folds
  bool asksForDevice = false;  // by its number
};

// What the options ask for; files that cannot be looked into count as empty, and so do those of
// tools that neither train nor predict.
PlannedRun plannedRun(const zelsvm_opt::ZelSvmOpt& options);

struct RunSeconds {
  double processor;
  double device;
};

RunSeconds estimatedSeconds(const PlannedRun& run, unsigned threads);

}  // namespace zelsvm_main
