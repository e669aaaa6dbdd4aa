// An option vector, one word a line, the program's name first, and the texts inside its options:
// parsed or refused.
#include "fuzzing.h"
#include "tool_runs.h"
#include "zeldplus/zelsvm/data/svm_scale.h"
#include "zeldplus/zelsvm/engine/class_weights.h"
#include "zeldplus/zelsvm/engine/svm_context.h"

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
  const zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training);
  for (const auto& [label, weight] : context.weights)
    zelfuzz::require(weight > 0, "class weights are positive");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto options = zelfuzz::parse(zelfuzz::wordsOf(zelfuzz::textOf(data, size), '\n'));
  zelfuzz::accepts([&] { makeContext(options); });
  for (const std::string& text : {options.xScale, options.yScale})
    zelfuzz::accepts([&] {
      const double2 range = zelsvm::parseScaleRange(text);
      zelfuzz::require(!(range.x > range.y), "a scale range ascends");
    });
  if (options.testFeatures <= mostTestElements && options.testSamples <= mostTestElements &&
      options.testFeatures * options.testSamples <= mostTestElements) {
    options.randomFeatures();
    options.randomLabels();
  }
  return 0;
}
