// What a predictor asks of the machine, on the processor.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace zelsvm {

std::unique_ptr<PredictorMachine> makeHostPredictor(const DecisionTask& task);

}  // namespace zelsvm
