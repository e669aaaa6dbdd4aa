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

// All formulations and kernels; samples and features around the widths of tiles, batches and sets.
std::vector<BitRun> bitRuns();

}  // namespace zeltest
