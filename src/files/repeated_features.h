// Features that stand more than once in a sample's line.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/file_warnings.h"

namespace zelsvm {

// Warns of each feature that repeats one before it in the line, which is the one that the warnings
// have begun. It takes far longer than reading: to be asked where indices do not ascend.
void warnOfRepeats(std::string_view line, std::uint64_t leadingCount, std::string_view fate,
                   zel::FileWarnings& warnings);

}  // namespace zelsvm
