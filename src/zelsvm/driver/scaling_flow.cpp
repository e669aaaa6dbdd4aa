#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/zelsvm/data/scaled_data.h"
#include "zeldplus/zelsvm/data/user_file_writer.h"
#include "zelsvm/driver/zelsvm_main.h"
#include "zelsvm/usage.h"

namespace zelsvm_main::inline ZEL_PLATFORM {

template <typename T>
void ZelSvmMain<T>::scale() {
  if (options->inputFile.empty() || options->outputFile.empty()) {
    zel::printMessage("%s", zelsvm_opt::usageText(zelsvm_opt::Tool::scale));
    return;
  }
  createContext();
  zelsvm::SvmScale<T> record;
  record.setRanges(zelsvm::parseScaleRange(options->xScale),
                   zelsvm::parseScaleRange(options->yScale));
  const bool restored = !options->restoreFile.empty();
  if (restored) record.restore(options->restoreFile, options->indexBase);
  // Features that the record knows and the file lacks are scaled like any other 0.
  loadData(options->inputFile, restored ? record.featureCount() : 0);
  if (!restored) record.initialize(*dataSet);
  zelsvm::ScaledData<T> scaled(*dataSet, record);
  zelsvm::UserFileWriter<T> writer(options->outputFile, options->indexBase);
  writer.writeRows(scaled.matrix(), scaled.labels().data(), 2);
  writer.close();
  if (!options->saveFile.empty() && options->saveFile != options->restoreFile)
    record.save(options->saveFile);
}

template void ZelSvmMain<double>::scale();

}  // namespace zelsvm_main::inline ZEL_PLATFORM
