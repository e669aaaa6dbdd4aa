#include <cstdint>
#include <memory>
#include <string>

#include "base/numbers.h"
#include "base/output/console.h"
#include "base/output/output_file.h"
#include "data/scaled_data.h"
#include "model/model_file.h"
#include "tools/flows/file_names.h"
#include "tools/flows/zelsvm_main.h"
#include "tools/usage.h"

namespace zelsvm_main {
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
    zel::writeMessage(zelsvm_opt::usageText(zelsvm_opt::Tool::train));
    return;
  }
  requireFoldCount();
  const bool validates = options->foldCount >= 2;
  const std::string modelFile =
      options->modelFile.empty() ? defaultModelName(options->inputFile) : options->modelFile;
  if (!validates)
    requireOtherFile({"model file", modelFile}, {"training data", options->inputFile});
  createContext();
  loadData(options->inputFile);
  createModel();
  zelsvm::ScaledData<T> scaled(*dataSet, model->scale);
  if (validates) {
    crossValidate(scaled);
    return reportCrossValidation();
  }
  zelsvm::GenericProcessor<T> processor(*context);
  processor.requireTrainable(scaled, options->probability);
  zel::requireWritable(modelFile);
  processor.train(*model, scaled, options->probability);
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
  std::string text;
  for (std::uint64_t i = 1; i <= options->foldCount; ++i) {
    char number[zel::numberCapacity];
    text.append(number, zel::formatDouble(number, i < results.size() ? results[i] : 0));
    text += regression ? " " : "% ";
    if (text.size() < 4096 && i != options->foldCount) continue;
    zel::writeMessage(text);
    text.clear();
  }
}

template void ZelSvmMain<double>::train();
template void ZelSvmMain<double>::reportCrossValidation() const;

}  // namespace zelsvm_main
