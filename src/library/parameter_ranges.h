// The ranges that the public header gives for the parameters.
#pragma once

#include <zelsvm/zelsvm.h>

namespace zelsvm::detail {

// Throws AppException naming the first member outside of its range.
void requireParameters(const Parameters& parameters);

}  // namespace zelsvm::detail
