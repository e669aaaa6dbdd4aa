#include "zelsvm/options.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <type_traits>
#include <vector>

#include "zeldplus/inc/zelmemory.h"
#include "zeldplus/inc/zelrandom.h"
#include "zelsvm/getopt.h"
#include "zelsvm/option_table.h"

namespace zelsvm_opt {
namespace {

void refuseCygwinTerminal() {
  const char* const terminal = std::getenv("TERM");
  if (terminal == nullptr || strcasecmp(terminal, "cygwin") != 0) return;
  std::fputs("Running zelsvm in Cygwin is not supported.\n", stderr);
  std::exit(EXIT_FAILURE);
}

template <typename T>
T readNumber(const char* text) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  T value{};
  stream >> value;
  return value;
}

// Stores one option's argument where the option's target says.
struct Store {
  ZelSvmOpt& options;
  const char* argument;

  template <typename T>
  void operator()(T ZelSvmOpt::*member) const {
    if constexpr (std::is_same_v<T, std::string>)
      options.*member = argument;
    else if constexpr (std::is_same_v<T, bool>)
      options.*member = readNumber<int>(argument) != 0;
    else
      options.*member = readNumber<T>(argument);
  }
  void operator()(Flag flag) const { options.*flag.member = flag.value; }
  void operator()(Ignored) const {}
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
  takeFileNames(tool, parseOptions(tool, arguments));
  if (tool != Tool::test) return;
  denseMatrix = true;
  if (resetTestSize) {
    testFeatures = 5;
    testSamples = 12;
  }
}

std::span<const char* const> ZelSvmOpt::parseOptions(Tool tool,
                                                     std::span<const char* const> arguments) {
  OptionParser parser(arguments, optionLetters(tool));
  while (const auto letter = parser.next()) {
    const Option* const option = findOption(tool, *letter);
    if (option != nullptr) std::visit(Store{*this, parser.argument()}, option->target);
  }
  return arguments.subspan(std::min(parser.index(), arguments.size()));
}

void ZelSvmOpt::takeFileNames(Tool tool, std::span<const char* const> names) {
  std::vector<std::string*> targets = {&inputFile, &modelFile, &outputFile};
  if (tool == Tool::scale) targets.erase(targets.begin() + 1);
  for (std::size_t i = 0; i < std::min(targets.size(), names.size()); ++i) *targets[i] = names[i];
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
