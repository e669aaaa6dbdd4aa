#include "base/output/console.h"
#include "base/output/output_file.h"
#include "prediction/prediction_file.h"
#include "runs/scaled_runs.h"
#include "tools/flows/file_names.h"
#include "tools/flows/zelsvm_main.h"
#include "tools/usage.h"

namespace zelsvm_main {

template <typename T>
void ZelSvmMain<T>::predict() {
  if (options->inputFile.empty() || options->modelFile.empty() || options->outputFile.empty()) {
    zel::writeMessage(zelsvm_opt::usageText(zelsvm_opt::Tool::predict));
    return;
  }
  const NamedFile output{"output file", options->outputFile};
  requireOtherFile(output, {"test data", options->inputFile});
  requireOtherFile(output, {"model file", options->modelFile});
  loadModel(options->modelFile);
  loadData(options->inputFile, model->testWidth());
  zelsvm::GenericProcessor<T> processor(*context);
  processor.requirePredictable(*model, options->probability);
  zel::requireWritable(options->outputFile);
  const auto [predictions, probabilities] =
      zelsvm::predictScaled(processor, *context, *model, *dataSet, options->probability);
  takePredictionMeasures(processor, model->scale.varianceFactor());
  if (zel::isVerbose()) reportPrediction();
  zelsvm::writePredictions(options->outputFile, predictions, probabilities, *model);
}

template <typename T>
void ZelSvmMain<T>::reportPrediction() const {
  if (context->problemKind != zelsvm::ProblemKind::regression) {
    zel::printMessage("Accuracy = %g%%\n", results[0]);
    return;
  }
  zel::printMessage("Mean squared error = %g\n", results[0]);
  zel::printMessage("Pearson correlation coefficient = %g\n", correlations[0]);
  if (!options->probability) return;
  zel::printMessage("\nProbability model of the test data with Laplace distribution:\n");
  zel::printMessage("  location parameter = predicted value\n");
  zel::printMessage("  scale paremeter = %g (in units of the targets)\n", model->residualScale());
}

template void ZelSvmMain<double>::predict();
template void ZelSvmMain<double>::reportPrediction() const;

}  // namespace zelsvm_main
