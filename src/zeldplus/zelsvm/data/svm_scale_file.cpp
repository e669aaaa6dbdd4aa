#include <algorithm>
#include <map>
#include <string_view>

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zelfiles.h"
#include "zeldplus/inc/zelnumbers.h"
#include "zeldplus/inc/zeltextoutput.h"
#include "zeldplus/zelsvm/data/svm_scale.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::string_view xScaleName = "X-scale";
constexpr std::string_view yScaleName = "Y-scale";

// Takes the text up to the next delimiter, leading delimiters skipped; empty when there is none.
std::string_view takeToken(std::string_view& text, char delimiter) {
  text.remove_prefix(std::min(text.find_first_not_of(delimiter), text.size()));
  const std::size_t end = std::min(text.find(delimiter), text.size());
  const std::string_view token = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return token;
}

// Reads two numbers separated by blanks; false when one is missing.
bool takePair(std::string_view& text, double2& pair) {
  const std::string_view first = takeToken(text, ' ');
  const std::string_view second = takeToken(text, ' ');
  if (first.empty() || second.empty()) return false;
  pair = {zel::parseDouble(first), zel::parseDouble(second)};
  return true;
}

void putPair(zel::TextOutput& output, const double2& pair) {
  output.put(pair.x).put(" ").put(pair.y).put("\n");
}

}  // namespace

double2 parseScaleRange(const std::string& text) {
  if (text.empty()) return {0, 0};
  if (text.find(':') == std::string::npos)
    throw zel::AppException("The scale parameter is of incorrect format.");
  std::string_view rest = std::string_view(text).substr(0, 4095);
  std::string_view lower = takeToken(rest, ':');
  const std::string_view upper = takeToken(rest, ':');
  if (lower.empty() || upper.empty()) return {0, 0};
  lower.remove_prefix(std::min(lower.find_first_not_of("'\""), lower.size()));
  const double2 range{zel::parseDouble(lower), zel::parseDouble(upper)};
  requireScaleRange(range);
  return range;
}

void requireScaleRange(const double2& range) {
  if (range.x >= range.y)
    throw zel::AppException("The lower bound of the scale parameter exceeds its upper bound.");
}

template <typename T>
void SvmScale<T>::save(const std::string& path) const {
  zel::CTextFile file(zel::FileMode::write);
  file.open(path);
  zel::TextOutput output(file);
  if (scalesFeatures()) {
    output.put(xScaleName).put(": ");
    putPair(output, features);
    for (std::uint64_t j = 0; j < featureCount(); ++j) {
      const double2 bounds = featureBounds()[j];
      if (bounds.x == 0 && bounds.y == 0) continue;
      output.put("  ").put(j).put(": ");
      putPair(output, bounds);
    }
  }
  if (scalesTargets()) {
    output.put(yScaleName).put(": ");
    putPair(output, targets);
    output.put("  ");
    putPair(output, targetBounds);
  }
  output.flush();
  file.close();
}

template <typename T>
void SvmScale<T>::restore(const std::string& path, std::uint64_t indexBase) {
  zel::CTextFile file(zel::FileMode::read);
  file.open(path);
  std::map<std::uint64_t, double2> boundsByNumber;
  std::uint64_t count = 0;
  std::string_view line;
  while (file.readLine(line)) {
    double2 pair;
    if (line.find(':') == std::string_view::npos) {
      if (takePair(line, pair)) targetBounds = pair;
      continue;
    }
    const std::string_view name = takeToken(line, ':');
    if (name.empty() || !takePair(line, pair)) continue;
    if (name == xScaleName) {
      features = pair;
    } else if (name == yScaleName) {
      targets = pair;
    } else {
      const std::uint64_t j = zel::parseUnsigned(name);
      count = std::max(count, j + indexBase);
      boundsByNumber.emplace(j, pair);
    }
  }
  boundsByFeature = std::make_unique<HostVector<double2>>(count);
  boundsByFeature->fill({0, 0});
  for (const auto& [j, bounds] : boundsByNumber)
    if (j < count) boundsByFeature->set(j, bounds);
  updateVarianceFactor();
}

template void SvmScale<double>::save(const std::string&) const;
template void SvmScale<double>::restore(const std::string&, std::uint64_t);

}  // namespace zelsvm::inline ZEL_PLATFORM
