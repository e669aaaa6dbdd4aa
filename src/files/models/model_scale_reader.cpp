#include "files/models/model_scale_reader.h"

#include <limits>

#include "base/numbers.h"
#include "files/file_base.h"
#include "files/models/class_sizes.h"

namespace zelsvm {
namespace {

bool readPair(SampleLine& line, zel::Interval& pair) {
  const std::string_view first = line.token();
  const std::string_view second = line.token();
  if (second.empty()) return false;
  pair = {line.number(first, "bound"), line.number(second, "bound")};
  return true;
}

}  // namespace

bool ModelScaleReader::continues(std::string_view line) {
  if (!line.starts_with(' ')) block = Block::none;
  return block != Block::none;
}

bool ModelScaleReader::readRange(std::string_view keyword, SampleLine& line) {
  const bool features = keyword == keywords::xScale;
  if (!features && keyword != keywords::yScale) return false;
  zel::Interval& range = features ? header.xRange : header.yRange;
  if (!readPair(line, range))
    warnings.add(keyword, "line", lacksNumber);
  else if (range.upper > range.lower)
    block = features ? Block::features : Block::targets;
  return true;
}

void ModelScaleReader::readBounds(SampleLine line) {
  const std::string_view begin = SampleLine(line).token();
  if (begin.empty()) return;
  bool complete = false;
  if (block == Block::features) {
    complete = readFeature(line);
  } else {
    complete = readPair(line, header.yBounds);
    hasTargetBounds = hasTargetBounds || complete;
  }
  if (complete)
    line.warnOfRest();
  else
    warnings.add(begin, "line", lacksNumber);
}

bool ModelScaleReader::readFeature(SampleLine& line) {
  const std::string_view name = line.tokenBeforeColon();
  zel::Interval bounds{};
  if (!readPair(line, bounds)) return false;
  const auto [feature, extent] = zel::readUnsigned(name);
  warnings.addNumber(name, "feature", extent);
  if (feature >= std::numeric_limits<std::int32_t>::max()) throwLoadingError();
  header.featureBounds[feature] = bounds;
  return true;
}

void ModelScaleReader::warnOfMissing() {
  if (header.xRange.lower < header.xRange.upper && header.featureBounds.empty())
    warnings.addMissing("bounds below \"X-scale:\"", "they count as 0");
  if (header.yRange.lower < header.yRange.upper && !hasTargetBounds)
    warnings.addMissing("bounds below \"Y-scale:\"", "they count as 0");
}

}  // namespace zelsvm
