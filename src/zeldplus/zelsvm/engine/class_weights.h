// Weights of the C parameter by class.
#pragma once

#include <map>
#include <string>

namespace zelsvm::inline ZEL_PLATFORM {

// Reads "label1:w1 label2:w2 …", quotes before a label skipped; the first weight of a label counts.
// Throws AppException for a weight that is not above 0 and for a text of 4096 characters or more.
std::map<double, double> parseClassWeights(const std::string& text);

}  // namespace zelsvm::inline ZEL_PLATFORM
