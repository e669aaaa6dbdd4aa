#include "zeldplus/zelsvm/engine/class_weights.h"

#include <cstdlib>
#include <cstring>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {

std::map<double, double> parseClassWeights(const std::string& text) {
  if (text.size() >= 4096) throw zel::AppException("The classification weights are too long.");
  std::map<double, double> weights;
  std::string buffer = text;
  char* rest = nullptr;
  const char* label = strtok_r(buffer.data(), ":", &rest);
  while (label != nullptr) {
    const char* const weightText = strtok_r(nullptr, " ", &rest);
    if (weightText == nullptr) break;
    while (*label == ' ') ++label;
    const double weight = std::strtod(weightText, nullptr);
    if (!(weight > 0)) throw zel::AppException("Invalid classification weight.");
    weights.emplace(std::strtod(zel::skipQuotes(label), nullptr), weight);
    label = strtok_r(nullptr, ":", &rest);
  }
  return weights;
}

}  // namespace zelsvm::inline ZEL_PLATFORM
