// Features that stand more than once in a sample's line.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/output/file_warnings.h"

namespace zelsvm {

// Warns of each feature that repeats an earlier one of the line, which the warnings have begun. It
// takes far longer than reading, so it is only called for lines whose indices do not ascend.
void warnOfRepeats(std::string_view line, std::uint64_t leadingCount, zel::FileWarnings& warnings);

}  // namespace zelsvm
