// Sums of the sigmoid fit on the processor.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace zelsvm {

std::unique_ptr<SigmoidSums> makeHostSigmoidSums();

}  // namespace zelsvm
