#include "zelsvm/driver/zelsvm_main.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zelrandom.h"
#include "zeldplus/zelsvm/data/read_data.h"
#include "zeldplus/zelsvm/engine/class_weights.h"
#include "zeldplus/zelsvm/model/model_file.h"
#include "zeldplus/zelsvm/training/scaled_runs.h"
#include "zelsvm/terminal_sink.h"
#include "zelsvm/tool.h"

namespace zelsvm_main::inline ZEL_PLATFORM {
namespace {

// One overall and one per fold; a count that would wrap around stays too large to allocate.
std::uint64_t measureCount(std::uint64_t foldCount) { return std::max(foldCount + 1, foldCount); }

}  // namespace

template <typename T>
ZelSvmMain<T>::ZelSvmMain(const zelsvm_opt::ZelSvmOpt& options)
    : options(&options),
      results(measureCount(options.foldCount)),
      correlations(measureCount(options.foldCount)) {
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
void ZelSvmMain<T>::selectDevice() const {
  zel::zelSafeCall(cudaSetDevice(options->gpuDevice));
  if (!zel::isVerbose()) return;
  cudaDeviceProp properties{};
  zel::zelSafeCall(cudaGetDeviceProperties(&properties, options->gpuDevice));
  zel::printMessage("%s GPU\n\n", properties.name);
}

template <typename T>
void ZelSvmMain<T>::seedRandom() const {
  zel::seedRandom(options->randomSeed != 0 ? options->randomSeed
                                           : static_cast<unsigned>(std::time(nullptr)));
}

template <typename T>
void ZelSvmMain<T>::run() {
  TerminalSink console(options->verbose);
  const zel::SinkScope scope(console);
  zel::printMessage("%s %s\n\n", options->toolName.c_str(), ZELSVM_VERSION);
  selectDevice();
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
  parameters.weights = zelsvm::parseClassWeights(options->weights);
  parameters.maxIterations = options->maxIterations;
  parameters.cacheSize = options->cacheSize;
  parameters.sparse = !options->denseMatrix;
  parameters.shrinking = options->shrinking;
  context = std::make_unique<zelsvm::SvmContext<T>>(parameters, zelsvm::ParameterChecks::training);
}

template <typename T>
void ZelSvmMain<T>::loadData(const std::string& path, std::uint64_t minimumCols) {
  samples.reset();
  dataSet.reset();
  reader = zelsvm::createReader<T>(path, options->indexBase, options->denseMatrix);
  reader->read(minimumCols);
  if (reader->isModel()) throw zel::AppException("Unexpected model content in input data file");
  samples = zelsvm::createMatrix(*reader, context->las());
  dataSet = std::make_unique<zelsvm::UserData<T>>(*samples, reader->leading());
}

template <typename T>
void ZelSvmMain<T>::loadModel(const std::string& path) {
  auto loaded = zelsvm::readModel<T>(path, options->indexBase, options->denseMatrix);
  model = std::move(loaded.model);
  context = std::move(loaded.context);
  modelReader = std::move(loaded.reader);
}

template <typename T>
void ZelSvmMain<T>::createModel() {
  model = std::make_unique<zelsvm::GenericModel<T>>();
  const bool regression = context->problemKind == zelsvm::ProblemKind::regression;
  zelsvm::fillScale(model->scale, *context, *dataSet,
                    {zelsvm::parseScaleRange(options->xScale),
                     regression ? zelsvm::parseScaleRange(options->yScale) : double2{0, 0}});
}

template <typename T>
void ZelSvmMain<T>::crossValidate(zelsvm::SimpleData<T>& data) {
  zelsvm::HostVector<T> predictions(data.sampleCount());
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

}  // namespace zelsvm_main::inline ZEL_PLATFORM
