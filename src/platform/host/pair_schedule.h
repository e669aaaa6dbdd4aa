// How many label pairs the processor trains at a time.
#pragma once

#include <cstdint>

#include "platform/machine.h"

namespace zelsvm {

// Machine::solversAtOnce.
unsigned pairsAtOnce(const zelmag::AbstractMatrix<double>& samples, const KernelSettings& kernel,
                     std::uint64_t cacheMegabytes, const PairLoad& load);

}  // namespace zelsvm
