#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/zelsvm/model/prediction_file.h"
#include "zeldplus/zelsvm/training/scaled_runs.h"
#include "zelsvm/driver/zelsvm_main.h"
#include "zelsvm/usage.h"

namespace zelsvm_main::inline ZEL_PLATFORM {

template <typename T>
void ZelSvmMain<T>::predict() {
  if (options->inputFile.empty() || options->modelFile.empty() || options->outputFile.empty()) {
    zel::printMessage("%s", zelsvm_opt::usageText(zelsvm_opt::Tool::predict));
    return;
  }
  loadModel(options->modelFile);
  loadData(options->inputFile, model->featureCount);
  zelsvm::GenericProcessor<T> processor(*context);
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
  zel::printMessage("  scale paremeter = %g\n", model->sigma);
}

template void ZelSvmMain<double>::predict();
template void ZelSvmMain<double>::reportPrediction() const;

}  // namespace zelsvm_main::inline ZEL_PLATFORM
