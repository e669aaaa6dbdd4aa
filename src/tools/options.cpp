#include "tools/options.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/errors.h"
#include "base/memory.h"
#include "base/output/file_warnings.h"
#include "base/random.h"
#include "tools/options/argument_number.h"
#include "tools/options/getopt.h"
#include "tools/options/option_table.h"

namespace zelsvm_opt {
namespace {

void refuseCygwinTerminal() {
  const char* const terminal = std::getenv("TERM");
  if (terminal == nullptr || strcasecmp(terminal, "cygwin") != 0) return;
  std::fputs("Running zelsvm in Cygwin is not supported.\n", stderr);
  std::exit(EXIT_FAILURE);
}

bool wantsStrictness() {
  const char* const text = std::getenv("ZELSVM_STRICT");
  const std::string_view value = text == nullptr ? "" : text;
  if (!value.empty() && value != "0" && value != "1")
    zel::throwAppException("ZELSVM_STRICT must be 0 or 1, not %s.", text);
  return value == "1";
}

// Stores one option's argument where the option's target says; returns how much of it counts.
struct Store {
  ZelSvmOpt& options;
  const char* argument;

  template <typename T>
  zel::NumberExtent operator()(T ZelSvmOpt::*member) const {
    if constexpr (std::is_same_v<T, std::string>) {
      options.*member = argument;
      return zel::NumberExtent::all;
    } else {
      using Number = std::conditional_t<std::is_same_v<T, bool>, int, T>;
      const auto [value, extent] = readArgument<Number>(argument);
      options.*member = static_cast<T>(value);
      return extent;
    }
  }
  zel::NumberExtent operator()(Flag flag) const {
    options.*flag.member = flag.value;
    return zel::NumberExtent::all;
  }
  zel::NumberExtent operator()(Ignored) const { return zel::NumberExtent::all; }
};

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  std::uint64_t result = 0;
  return __builtin_mul_overflow(a, b, &result) ? std::numeric_limits<std::uint64_t>::max() : result;
}

std::unique_ptr<double[]> uninitialised(std::uint64_t count) {
  zel::requireHostMemory(count, sizeof(double));
  return std::make_unique_for_overwrite<double[]>(count);
}

// Nearly always 0: only the largest number of the sequence reaches the divisor.
double randomQuotient() { return zel::nextRandom() / zel::randomMax; }

}  // namespace

ZelSvmOpt::ZelSvmOpt(int argc, const char* const* argv) {
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  const std::string name = programBaseName(arguments.empty() ? "" : arguments[0]);
  refuseCygwinTerminal();
  const Tool tool = toolNamed(name);
  toolName = tool == Tool::none ? "zelsvm" : name;
  if (tool == Tool::scale) xScale = "-1:1";
  strict = wantsStrictness();
  parseArguments(tool, arguments);
  if (tool != Tool::test) return;
  denseMatrix = true;
  if (resetTestSize) {
    testFeatures = 5;
    testSamples = 12;
  }
}

void ZelSvmOpt::parseArguments(Tool tool, std::span<const char* const> arguments) {
  OptionParser parser(tool, arguments, warnings);
  while (const auto given = parser.next()) {
    const auto extent = std::visit(Store{*this, given->argument}, given->option->target);
    if (extent == zel::NumberExtent::all) continue;
    warnings.push_back("option " + given->spelling + ": " + zel::quoted(given->argument) + " " +
                       std::string(zel::fateOf(extent)));
  }
  takeFileNames(tool, parser.rest());
  // A program of any other name has no use for arguments.
  if (tool == Tool::none) warnings.clear();
}

void ZelSvmOpt::takeFileNames(Tool tool, std::span<const char* const> names) {
  std::vector<std::string*> targets = {&inputFile, &modelFile, &outputFile};
  if (tool == Tool::scale) targets.erase(targets.begin() + 1);
  for (std::size_t i = 0; i < std::min(targets.size(), names.size()); ++i) *targets[i] = names[i];
  const std::size_t used = fileNames(tool).size();
  if (names.size() > used)
    warnings.push_back(zel::quoted(names[used]) + " is one file too many and is ignored" +
                       zel::countOf(names.size() - used));
}

double* ZelSvmOpt::randomFeatures() const {
  if (features == nullptr) {
    const std::uint64_t count = product(testSamples, testFeatures);
    features = uninitialised(count);
    std::generate_n(features.get(), count, randomQuotient);
  }
  return features.get();
}

double* ZelSvmOpt::randomLabels() const {
  if (labels == nullptr) {
    labels = uninitialised(testSamples);
    std::generate_n(labels.get(), testSamples, [] { return 0.5 > randomQuotient() ? -1.0 : 1.0; });
  }
  return labels.get();
}

}  // namespace zelsvm_opt
