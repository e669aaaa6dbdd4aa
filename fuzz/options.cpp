// An option vector, one word a line, the program's name first, and the texts inside its options:
// parsed or refused.
#include "data/svm_scale.h"
#include "fuzzing.h"
#include "parameters/class_weights.h"
#include "parameters/svm_context.h"
#include "platform/host/host_machine.h"
#include "tool_runs.h"
#include "tools/usage.h"

namespace {

constexpr std::uint64_t mostTestElements = 4096;

void makeContext(const zelsvm_opt::ZelSvmOpt& options) {
  zelsvm::SvmParameters parameters;
  parameters.svmType = options.svmType;
  parameters.kernelType = options.kernelType;
  parameters.degree = options.degree;
  parameters.gamma = options.gamma;
  parameters.C = options.cost;
  parameters.nu = options.nu;
  parameters.eps = options.tolerance;
  parameters.weights = zelsvm::parseClassWeights(options.weights);
  const zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                           zelsvm::hostMachine());
  for (const auto& [label, weight] : context.weights)
    zelfuzz::require(weight > 0, "class weights are positive");
}

void readTexts(const zelsvm_opt::ZelSvmOpt& options) {
  zelfuzz::accepts([&] { makeContext(options); });
  for (const std::string& text : {options.xScale, options.yScale})
    zelfuzz::accepts([&] {
      const zel::Interval range = zelsvm::parseScaleRange(text);
      zelfuzz::require(!(range.lower > range.upper), "a scale range ascends");
    });
  if (options.testFeatures <= mostTestElements && options.testSamples <= mostTestElements &&
      options.testFeatures * options.testSamples <= mostTestElements) {
    options.randomFeatures();
    options.randomLabels();
  }
  zelsvm_opt::answerTo(options);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto words = zelfuzz::wordsOf(zelfuzz::textOf(data, size), '\n');
  zelfuzz::accepts([&] { readTexts(zelfuzz::parse(words)); });
  return 0;
}
