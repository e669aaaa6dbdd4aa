#include <memory>

#include "base/errors.h"
#include "tools/flows/zelsvm_main.h"

namespace zelsvm_main {

template <typename T>
void ZelSvmMain<T>::createTestData() {
  if (!options->denseMatrix)
    throw zel::AppException("Only dense matrices are allowed for internal testing.");
  samples = zelmag::createMatrix<T>(options->randomFeatures(), nullptr, nullptr,
                                    options->testFeatures, options->testSamples);
  labelStore =
      std::make_unique<zelsvm::HostVector<T>>(options->testSamples, options->randomLabels());
  dataSet = std::make_unique<zelsvm::UserData<T>>(*samples, *labelStore);
}

// Measures without printing. The scale record only goes into the model: unlike the training tool,
// this one sees the data as they are.
template <typename T>
void ZelSvmMain<T>::test() {
  requireFoldCount();
  createContext();
  if (options->inputFile.empty())
    createTestData();
  else
    loadData(options->inputFile);
  createModel();
  if (options->foldCount > 1) return crossValidate(*dataSet);
  zelsvm::GenericProcessor<T> processor(*context);
  processor.train(*model, *dataSet, options->probability);
  zelsvm::HostVector<T> predictions(dataSet->sampleCount());
  zelsvm::HostVector<T> noProbabilities;
  processor.predict(predictions, noProbabilities, *model, *dataSet, false);
  takePredictionMeasures(processor, model->scale.varianceFactor());
}

template void ZelSvmMain<double>::test();

}  // namespace zelsvm_main
