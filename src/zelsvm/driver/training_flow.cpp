#include <cstdint>
#include <memory>
#include <string>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/zelsvm/data/scaled_data.h"
#include "zeldplus/zelsvm/model/model_file.h"
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
  createContext();
  loadData(options->inputFile);
  createModel();
  zelsvm::ScaledData<T> scaled(*dataSet, model->scale);
  if (options->foldCount >= 2) {
    crossValidate(scaled);
    return reportCrossValidation();
  }
  zelsvm::GenericProcessor<T> processor(*context);
  processor.train(*model, scaled, options->probability);
  const std::string modelFile =
      options->modelFile.empty() ? defaultModelName(options->inputFile) : options->modelFile;
  zelsvm::writeModel(modelFile, options->indexBase, *context, *model);
  if (zel::isVerbose()) zel::printMessage("Total nSV = %lu\n", model->vectors().rows());
}

template <typename T>
void ZelSvmMain<T>::reportCrossValidation() const {
  const bool regression = context->problemKind == zelsvm::ProblemKind::regression;
  zel::printMessage("\nResult of %lu-fold cross-validation:\n", options->foldCount);
  if (regression) {
    zel::printMessage("  Mean squared error = %g\n", results[0]);
    zel::printMessage("  Pearson correlation coefficient = %g\n", correlations[0]);
    zel::printMessage("Mean squared errors of individual training:\n  ");
  } else {
    zel::printMessage("  Accuracy = %g%%\n", results[0]);
    zel::printMessage("Individual training accuracy:\n  ");
  }
  const char* const unit = regression ? "" : "%";
  for (std::uint64_t i = 1; i <= options->foldCount; ++i)
    zel::printMessage("%g%s ", results[i], unit);
}

template void ZelSvmMain<double>::train();
template void ZelSvmMain<double>::reportCrossValidation() const;

}  // namespace zelsvm_main::inline ZEL_PLATFORM
