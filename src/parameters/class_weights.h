// Weights of the C parameter by class.
#pragma once

#include <map>
#include <span>
#include <string>

namespace zelsvm {

// Reads "label1:w1 label2:w2 …", quotes before a label skipped; the first weight of a label counts.
// What is ignored goes to zel::warn. Throws AppException for a weight that is not above 0 and for a
// text of 4096 characters or more.
std::map<double, double> parseClassWeights(const std::string& text);

// Warns of each weight whose label no sample has.
void warnOfAbsentLabels(const std::map<double, double>& weights, std::span<const double> labels);

}  // namespace zelsvm
