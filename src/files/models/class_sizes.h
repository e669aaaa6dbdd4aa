// The numbers of support vectors by class.
#pragma once

#include <cstdint>
#include <vector>

#include "files/models/model_header.h"

namespace zelsvm {

// Takes the support-vector lines that were skipped out of their classes' sizes; the position of a
// line decides its class. lineCount counts all lines, skippedLines are zero-based and ascending.
// Throws RuntimeException when the lines are fewer than announced or the sizes do not add up to
// them.
void settleClassSizes(ModelHeader& header, std::uint64_t lineCount,
                      const std::vector<std::uint64_t>& skippedLines);

// Throws RuntimeException "Error in loading SVM numeric values".
[[noreturn]] void throwLoadingError();

}  // namespace zelsvm
