#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <string_view>

#include "base/errors.h"
#include "base/files.h"
#include "base/numbers.h"
#include "base/output/console.h"
#include "base/output/file_warnings.h"
#include "base/output/text_output.h"
#include "data/svm_scale.h"

namespace zelsvm {
namespace {

constexpr std::string_view xScaleName = "X-scale";
constexpr std::string_view yScaleName = "Y-scale";
constexpr std::string_view modelName = "SvmType";  // begins a model file

// Takes the text up to the next delimiter, leading delimiters skipped; empty when there is none.
std::string_view takeToken(std::string_view& text, char delimiter) {
  text.remove_prefix(std::min(text.find_first_not_of(delimiter), text.size()));
  const std::size_t end = std::min(text.find(delimiter), text.size());
  const std::string_view token = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return token;
}

// Unlike text that counts as 0, an infinity or a NaN.
bool beginsWithDigits(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of("\t\v\f\r"), text.size()));
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  if (text.starts_with('.')) text.remove_prefix(1);
  return !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) != 0;
}

[[noreturn]] void throwRecordError(const std::string& path, const char* fault) {
  zel::throwAppException("The scale parameter file %s %s.", path.c_str(), fault);
}

// What a scale parameter file says.
class RecordFile {
 public:
  explicit RecordFile(const std::string& path) : path(path), warnings(path) {
    zel::CTextFile file(zel::FileMode::read);
    file.open(path);
    std::string_view line;
    while (file.readLine(line)) {
      if (!file.lastLineEnded()) throwRecordError(path, "is cut short");
      warnings.beginLine(line);
      if (!takeLine(line)) warnings.add(line, "line", "is unknown and ignored");
    }
    if (!features && !targets) throwRecordError(path, "has no line X-scale or Y-scale");
    warnings.tell();
  }

  std::optional<zel::Interval> features;  // the ranges
  std::optional<zel::Interval> targets;
  std::optional<zel::Interval> targetBounds;
  zelmag::BoundsByFeature boundsByFeature;

 private:
  // False for a line that is ignored.
  bool takeLine(std::string_view line) {
    zel::Interval pair;
    if (line.find(':') == std::string_view::npos) {
      const bool taken = takePair(line, pair);
      if (taken) targetBounds = pair;
      return taken;
    }
    const std::string_view name = takeToken(line, ':');
    if (name == modelName) throwRecordError(path, "is a model");
    if (name.empty() || !takePair(line, pair)) return false;
    if (name == xScaleName)
      features = pair;
    else if (name == yScaleName)
      targets = pair;
    else
      takeFeature(name, pair);
    return true;
  }

  void takeFeature(std::string_view name, const zel::Interval& bounds) {
    const auto [feature, extent] = zel::readUnsigned(name);
    warnings.addNumber(name, "feature", extent);
    if (!boundsByFeature.emplace(feature, bounds).second)
      warnings.add(name, "feature", "has bounds already, which count");
  }

  // Reads two numbers separated by blanks; false when one is missing.
  bool takePair(std::string_view text, zel::Interval& pair) {
    const std::string_view first = takeToken(text, ' ');
    const std::string_view second = takeToken(text, ' ');
    if (first.empty() || second.empty()) return false;
    pair = {finiteNumber(first), finiteNumber(second)};
    warnings.addRest(text);
    return true;
  }

  double finiteNumber(std::string_view text) {
    const auto [number, extent] = zel::readDouble(text);
    if (!beginsWithDigits(text) || !std::isfinite(number))
      throwRecordError(path, "has a bound that is no finite number");
    warnings.addNumber(text, "bound", extent);
    return number;
  }

  const std::string& path;
  zel::FileWarnings warnings;
};

bool isZero(const zel::Interval& pair) { return pair.lower == 0 && pair.upper == 0; }

void putPair(zel::TextOutput& output, const zel::Interval& pair) {
  const double resolution = zel::boundResolution(pair.lower, pair.upper);
  output.put(pair.lower, resolution).put(" ").put(pair.upper, resolution).put("\n");
}

// The number at the start of an end of the interval.
double readEnd(std::string_view end, const std::string& text) {
  const auto [value, extent] = zel::readDouble(zel::withoutClosingQuotes(end));
  if (extent != zel::NumberExtent::all)
    zel::warn(("scale parameter " + zel::quoted(text) + ": " + zel::quoted(end) + " ")
                  .append(zel::fateOf(extent)));
  return value;
}

}  // namespace

zel::Interval parseScaleRange(const std::string& text) {
  if (text.empty()) return {0, 0};
  if (text.find(':') == std::string::npos)
    throw zel::AppException("The scale parameter is of incorrect format.");
  std::string_view rest = std::string_view(text).substr(0, 4095);
  std::string_view lower = takeToken(rest, ':');
  const std::string_view upper = takeToken(rest, ':');
  if (lower.empty() || upper.empty()) {
    zel::warn("scale parameter " + zel::quoted(text) + ": an end is missing, nothing is scaled");
    return {0, 0};
  }
  lower.remove_prefix(std::min(lower.find_first_not_of("'\""), lower.size()));
  const zel::Interval range{readEnd(lower, text), readEnd(upper, text)};
  if (!rest.empty())
    zel::warn("scale parameter " + zel::quoted(text) + ": " + zel::quoted(rest) + " is ignored");
  requireScaleRange(range);
  return range;
}

void requireScaleRange(const zel::Interval& range) {
  if (range.lower >= range.upper)
    throw zel::AppException("The lower bound of the scale parameter exceeds its upper bound.");
  if (!std::isfinite(range.upper - range.lower))
    zel::throwAppException("The scale interval %g:%g has no finite length.", range.lower,
                           range.upper);
}

template <typename T>
void SvmScale<T>::save(const std::string& path) const {
  zel::CTextFile file(zel::FileMode::write);
  file.open(path);
  write(file);
  file.close();
}

template <typename T>
void SvmScale<T>::write(zel::CTextFile& file) const {
  zel::TextOutput output(file);
  if (scalesFeatures()) {
    output.put(xScaleName).put(": ");
    putPair(output, features);
    const bool leavesOutZeros = mayLeaveOutZeros();
    const std::uint64_t columns = featureBounds().size();
    for (std::uint64_t j = 0; j < columns; ++j) {
      const zel::Interval pair = featureBounds()[j];
      // The last one's line says how many features there are.
      if (leavesOutZeros && isZero(pair) && j + 1 < columns) continue;
      output.put("  ").put(numbers[j]).put(": ");
      putPair(output, pair);
    }
  }
  if (scalesTargets()) {
    output.put(yScaleName).put(": ");
    putPair(output, targets);
    output.put("  ");
    putPair(output, targetBounds);
  }
  output.flush();
}

// Where few features remain, the others would be taken for unused ones.
template <typename T>
bool SvmScale<T>::mayLeaveOutZeros() const {
  std::uint64_t others = 0;
  for (std::uint64_t j = 0; j < featureBounds().size(); ++j) others += !isZero(featureBounds()[j]);
  return !zelmag::fewInUse(featureCount(), others);
}

template <typename T>
void SvmScale<T>::restore(const std::string& path) {
  const RecordFile record(path);
  if (record.features) features = *record.features;
  if (record.targets) targets = *record.targets;
  if (record.boundsByFeature.empty()) {
    if (record.features && scalesFeatures()) throwRecordError(path, "has no bounds of features");
    features = {0, 0};
  }
  if (scalesTargets() && !record.targetBounds) throwRecordError(path, "has no bounds of targets");
  targetBounds = record.targetBounds.value_or(zel::Interval{0, 0});
  setBounds(record.boundsByFeature);
  updateVarianceFactor();
}

template void SvmScale<double>::save(const std::string&) const;
template void SvmScale<double>::write(zel::CTextFile&) const;
template void SvmScale<double>::restore(const std::string&);

}  // namespace zelsvm
