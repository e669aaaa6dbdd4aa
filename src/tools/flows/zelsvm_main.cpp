#include "tools/flows/zelsvm_main.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

#include "base/errors.h"
#include "base/output/console.h"
#include "base/random.h"
#include "files/read_data.h"
#include "model/model_file.h"
#include "parameters/class_weights.h"
#include "runs/scaled_runs.h"
#include "tools/terminal_sink.h"
#include "tools/tool.h"

namespace zelsvm_main {

template <typename T>
ZelSvmMain<T>::ZelSvmMain(const zelsvm_opt::ZelSvmOpt& options, MachineChoice chooseMachine)
    : options(&options), chooseMachine(std::move(chooseMachine)), results(1), correlations(1) {
  results.fill(0);
  correlations.fill(0);
}

template <typename T>
ZelSvmMain<T>::~ZelSvmMain() {
  reset();
}

template <typename T>
void ZelSvmMain<T>::reset() {
  model.reset();
  samples.reset();
  labelStore.reset();
  dataSet.reset();
  reader.reset();
  modelReader.reset();
  context.reset();
}

template <typename T>
void ZelSvmMain<T>::selectMachine() {
  machine = &chooseMachine(options->gpuDevice);
  if (zel::isVerbose()) zel::printMessage("%s GPU\n\n", machine->name().c_str());
}

template <typename T>
void ZelSvmMain<T>::seedRandom() const {
  zel::seedRandom(options->randomSeed != 0 ? options->randomSeed
                                           : static_cast<unsigned>(std::time(nullptr)));
}

template <typename T>
void ZelSvmMain<T>::run() {
  TerminalSink console({options->verbose, options->strict, options->toolName});
  const zel::SinkScope scope(console);
  zel::printMessage("%s %s\n\n", options->toolName.c_str(), ZELSVM_VERSION);
  for (const std::string& warning : options->warnings) zel::warn(warning);
  selectMachine();
  seedRandom();
  reset();
  switch (zelsvm_opt::toolNamed(options->toolName)) {
    case zelsvm_opt::Tool::train:
      return train();
    case zelsvm_opt::Tool::predict:
      return predict();
    case zelsvm_opt::Tool::scale:
      return scale();
    case zelsvm_opt::Tool::test:
      return test();
    case zelsvm_opt::Tool::none:
      std::fprintf(stderr, "This program is a tool under one of these names: %s.\n",
                   zelsvm_opt::toolNames().c_str());
      return;
  }
}

template <typename T>
void ZelSvmMain<T>::createContext() {
  zelsvm::SvmParameters parameters;
  parameters.svmType = options->svmType;
  parameters.kernelType = options->kernelType;
  parameters.degree = options->degree;
  parameters.gamma = options->gamma;
  parameters.coef0 = options->coef0;
  parameters.C = options->cost;
  parameters.p = options->epsilon;
  parameters.nu = options->nu;
  parameters.eps = options->tolerance;
  const auto weights = zelsvm::parseClassWeights(options->weights);
  // Other formulations pass them over.
  if (options->svmType == static_cast<int>(zelsvm::SVM_TYPE_C_CLASSIFICATION))
    parameters.weights = weights;
  parameters.maxIterations = options->maxIterations;
  parameters.cacheSize = options->cacheSize;
  parameters.sparse = !options->denseMatrix;
  parameters.shrinking = options->shrinking;
  context = std::make_unique<zelsvm::SvmContext<T>>(parameters, zelsvm::ParameterChecks::training,
                                                    *machine);
}

template <typename T>
void ZelSvmMain<T>::requireFoldCount() const {
  constexpr std::uint64_t mostFolds = 1000000;
  if (options->foldCount > mostFolds)
    zel::throwAppException("Cross-validation takes at most %lu folds.", mostFolds);
}

template <typename T>
void ZelSvmMain<T>::loadData(const std::string& path, std::uint64_t minimumCols) {
  samples.reset();
  dataSet.reset();
  reader = zelsvm::createReader<T>(path, options->indexBase, options->denseMatrix);
  reader->read(minimumCols);
  if (reader->isModel()) throw zel::AppException("Unexpected model content in input data file");
  samples = reader->matrix();
  dataSet = std::make_unique<zelsvm::UserData<T>>(*samples, reader->leading());
}

template <typename T>
void ZelSvmMain<T>::loadModel(const std::string& path) {
  auto loaded = zelsvm::readModel<T>(path, options->indexBase, options->denseMatrix, *machine);
  model = std::move(loaded.model);
  context = std::move(loaded.context);
  modelReader = std::move(loaded.reader);
}

template <typename T>
void ZelSvmMain<T>::createModel() {
  model = std::make_unique<zelsvm::GenericModel<T>>();
  if (context->svmType == zelsvm::SVM_TYPE_C_CLASSIFICATION) {
    const auto& labels = dataSet->labels();
    zelsvm::warnOfAbsentLabels(context->weights, {labels.data(), labels.size()});
  }
  const bool regression = context->problemKind == zelsvm::ProblemKind::regression;
  zelsvm::fillScale(model->scale, *context, *dataSet,
                    {zelsvm::parseScaleRange(options->xScale),
                     regression ? zelsvm::parseScaleRange(options->yScale) : zel::Interval{0, 0}});
}

template <typename T>
void ZelSvmMain<T>::crossValidate(zelsvm::SimpleData<T>& data) {
  zelsvm::HostVector<T> predictions(data.sampleCount());
  const std::uint64_t measures = std::min(options->foldCount, data.sampleCount()) + 1;
  results.resize(measures);
  correlations.resize(measures);
  zelsvm::crossValidateScaled(predictions, results, correlations, *context, data, model->scale,
                              options->foldCount, options->probability);
}

template <typename T>
void ZelSvmMain<T>::takePredictionMeasures(const zelsvm::GenericProcessor<T>& processor,
                                           double varianceFactor) {
  results.set(0, processor.evaluator().primaryMeasure() * varianceFactor);
  correlations.set(0, processor.evaluator().secondaryMeasure());
}

template class ZelSvmMain<double>;

}  // namespace zelsvm_main
