#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/zelsvm/data/scaled_data.h"
#include "zeldplus/zelsvm/model/prediction_file.h"
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
  zelsvm::ScaledData<T> scaled(*dataSet, model->scale);
  zelsvm::HostVector<T> predictions(samples->rows());
  const bool perLabel =
      options->probability && context->problemKind == zelsvm::ProblemKind::classification;
  zelsvm::HostVector<T> probabilities(perLabel ? model->labels().size() * predictions.size() : 0);
  probabilities.fill(0);
  zelsvm::GenericProcessor<T> processor(*context);
  processor.predict(predictions, probabilities, *model, scaled, options->probability);
  for (std::uint64_t i = 0; i < predictions.size(); ++i)
    predictions.set(i, model->scale.unscaledTarget(predictions[i]));
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
