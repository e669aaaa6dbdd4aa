#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "base/output/console.h"
#include "base/output/output_file.h"
#include "data/scaled_data.h"
#include "files/user_file_writer.h"
#include "tools/flows/file_names.h"
#include "tools/flows/zelsvm_main.h"
#include "tools/usage.h"

namespace zelsvm_main {
namespace {

// Scaling in place is fine. A record that is restored and saved under one name stays as it is.
bool checkNames(const zelsvm_opt::ZelSvmOpt& options) {
  const NamedFile output{"output file", options.outputFile};
  const NamedFile saved{"file of saved parameters", options.saveFile};
  const bool restores = !options.restoreFile.empty();
  if (restores) requireOtherFile(output, {"file of restored parameters", options.restoreFile});
  if (options.saveFile.empty()) return false;
  if (restores && zel::leadToSameFile(options.saveFile, options.restoreFile)) return false;
  requireOtherFile(saved, {"input file", options.inputFile});
  requireTwoFiles(saved, output);
  return true;
}

template <typename T>
void warnOfUnknownFeatures(const zelsvm_opt::ZelSvmOpt& options, const zelsvm::SvmScale<T>& record,
                           const zelmag::AbstractMatrix<T>& samples) {
  constexpr std::size_t named = 5;
  const std::vector<std::uint64_t> unknown = record.unknownFeatures(samples);
  if (unknown.empty()) return;
  std::string text = options.restoreFile + " has no bounds for " + std::to_string(unknown.size()) +
                     " of the features in " + options.inputFile + ": ";
  for (std::size_t i = 0; i < std::min(named, unknown.size()); ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(unknown[i] + options.indexBase);
  zel::warn(text + (unknown.size() > named ? ", ..." : ""));
}

// Neither file takes its place before both are written.
template <typename T>
void writeScaled(const zelsvm_opt::ZelSvmOpt& options, zelsvm::SvmData<T>& samples,
                 const zelsvm::SvmScale<T>& record, bool saves) {
  zelsvm::ScaledData<T> scaled(samples, record);
  zelsvm::UserFileWriter<T> writer(options.outputFile, options.indexBase);
  writer.writeRows(scaled.matrix(), scaled.labels().data(), 2,
                   zel::boundResolution(record.yRange().lower, record.yRange().upper));
  writer.finish();
  zel::CTextFile recordFile(zel::FileMode::write);
  if (saves) {
    recordFile.open(options.saveFile);
    record.write(recordFile);
    recordFile.finish();
  }
  writer.close();
  if (saves) recordFile.close();
}

}  // namespace

template <typename T>
void ZelSvmMain<T>::scale() {
  if (options->inputFile.empty() || options->outputFile.empty()) {
    zel::writeMessage(zelsvm_opt::usageText(zelsvm_opt::Tool::scale));
    return;
  }
  const bool saves = checkNames(*options);
  createContext();
  zelsvm::SvmScale<T> record;
  record.setRanges(zelsvm::parseScaleRange(options->xScale),
                   zelsvm::parseScaleRange(options->yScale));
  const bool restored = !options->restoreFile.empty();
  if (restored) record.restore(options->restoreFile);
  // Features that the record knows and the file lacks are scaled like any other 0.
  const bool widens = restored && !record.featureNumbers().isListed();
  loadData(options->inputFile, widens ? record.featureCount() : 0);
  if (restored)
    warnOfUnknownFeatures(*options, record, *samples);
  else
    record.initialize(*dataSet);
  zel::requireWritable(options->outputFile);
  if (saves) zel::requireWritable(options->saveFile);
  writeScaled(*options, *dataSet, record, saves);
}

template void ZelSvmMain<double>::scale();

}  // namespace zelsvm_main
