#include "files/sample_line.h"

namespace zelsvm {

double SampleLine::unusualNumber(std::string_view text, std::string_view what,
                                 zel::FileWarnings* warnings) {
  const auto [value, extent] = zel::readDouble(text);
  if (extent != zel::NumberExtent::all && warnings != nullptr)
    warnings->addNumber(text, what, extent);
  return value;
}

std::uint32_t SampleLine::unusualIndex(std::string_view text, zel::FileWarnings* warnings) {
  const auto [index, extent] = zel::readUnsigned(text);
  if (extent != zel::NumberExtent::all && warnings != nullptr)
    warnings->addNumber(text, "index", extent);
  return index;
}

void SampleLine::warnOfText(std::string_view text, zel::FileWarnings* warnings) {
  if (warnings != nullptr) warnings->addRest(text);
}

}  // namespace zelsvm
