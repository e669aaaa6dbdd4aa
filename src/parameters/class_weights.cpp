#include "parameters/class_weights.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include "base/errors.h"
#include "base/numbers.h"
#include "base/output/console.h"
#include "base/output/file_warnings.h"

namespace zelsvm {
namespace {

// First character that is no quote.
const char* skipQuotes(const char* text) {
  while (*text == '\'' || *text == '"') ++text;
  return text;
}

void warn(std::string_view part, std::string_view fate) {
  zel::warn(("class weights: " + zel::quoted(part) + " ").append(fate));
}

// What stands behind the number is ignored, but a quote there closes one that was skipped.
double readNumber(std::string_view text) {
  const auto [value, extent] = zel::readDouble(zel::withoutClosingQuotes(text));
  if (extent != zel::NumberExtent::all) warn(text, zel::fateOf(extent));
  return value;
}

}  // namespace

std::map<double, double> parseClassWeights(const std::string& text) {
  if (text.size() >= 4096) throw zel::AppException("The classification weights are too long.");
  std::map<double, double> weights;
  std::string buffer = text;
  char* rest = nullptr;
  const char* label = strtok_r(buffer.data(), ":", &rest);
  if (label == nullptr && !text.empty()) warn(text, "has no weight and is ignored");
  while (label != nullptr) {
    const char* const weightText = strtok_r(nullptr, " ", &rest);
    while (*label == ' ') ++label;
    if (weightText == nullptr) {
      if (*skipQuotes(label) != '\0') warn(label, "has no weight and is ignored");
      break;
    }
    const double weight = readNumber(weightText);
    if (!(weight > 0)) throw zel::AppException("Invalid classification weight.");
    if (!weights.emplace(readNumber(skipQuotes(label)), weight).second)
      warn(label, "has a weight already, which counts");
    label = strtok_r(nullptr, ":", &rest);
  }
  return weights;
}

void warnOfAbsentLabels(const std::map<double, double>& weights, std::span<const double> labels) {
  for (const auto& [label, weight] : weights) {
    if (std::find(labels.begin(), labels.end(), label) != labels.end()) continue;
    char text[zel::numberCapacity];
    warn({text, std::to_chars(text, std::end(text), label).ptr}, "is no label of the data");
  }
}

}  // namespace zelsvm
