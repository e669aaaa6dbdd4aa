#include <string>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/data/scaled_data.h"
#include "zeldplus/zelsvm/model/model_file.h"
#include "zeldplus/zelsvm/training/rsprocessor.h"
#include "zelsvm/driver/zelsvm_main.h"
#include "zelsvm/usage.h"

namespace zelsvm_main::inline ZEL_PLATFORM {
namespace {

// In the current directory, not beside the data.
std::string defaultModelName(const std::string& dataPath) {
  const std::size_t separator = dataPath.find_last_of("/\\");
  return dataPath.substr(separator == std::string::npos ? 0 : separator + 1) + ".model";
}

}  // namespace

template <typename T>
void ZelSvmMain<T>::train() {
  if (options->inputFile.empty()) {
    zel::printMessage("%s", zelsvm_opt::usageText(zelsvm_opt::Tool::train));
    return;
  }
  if (options->foldCount >= 2)
    throw zel::AppException("Cross-validation is not available in this version.");
  const std::string modelFile =
      options->modelFile.empty() ? defaultModelName(options->inputFile) : options->modelFile;
  createContext();
  loadData(options->inputFile);
  model = std::make_unique<zelsvm::GenericModel<T>>();
  const bool regression = context->problemKind == zelsvm::ProblemKind::regression;
  model->scale.setRanges(zelsvm::parseScaleRange(options->xScale),
                         regression ? zelsvm::parseScaleRange(options->yScale) : double2{0, 0});
  model->scale.initialize(*dataSet);
  zelsvm::ScaledData<T> scaled(*dataSet, model->scale);
  zelsvm::GenericProcessor<T> processor(*context);
  processor.train(*model, scaled, options->probability);
  zelsvm::writeModel(modelFile, options->indexBase, *context, *model);
  if (zel::verbose) zel::printMessage("Total nSV = %lu\n", model->vectors().rows());
}

template void ZelSvmMain<double>::train();

}  // namespace zelsvm_main::inline ZEL_PLATFORM
