// Trainings, cross-validations and predictions whose results are to be the same bits everywhere.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "parameters/svm_context.h"
#include "support/samples.h"

namespace zeltest {

struct BitRun {
  std::string name;
  Samples samples;
  Samples test{};  // what the model predicts; none where folds are
  zelsvm::SvmParameters parameters;
  bool probability = false;
  std::uint64_t folds = 0;  // 0 for a training
};

// All formulations and kernels; samples and features around the widths of tiles and batches. One
// run goes by working sets.
std::vector<BitRun> shortRuns();

// As many samples as take a cache and working sets, and sparse and whole numbers.
std::vector<BitRun> longRuns();

}  // namespace zeltest
