// A line of training options, then a data file: what was trained on it predicts it again from the
// model file, or training refused.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "files/sparse_file_reader.h"
#include "fuzzing.h"
#include "memory_file.h"
#include "tool_runs.h"

namespace {

using zelfuzz::MemoryFile;
using zelsvm_opt::ZelSvmOpt;

constexpr std::uint64_t mostIterations = 200;
constexpr std::uint64_t mostColumns = 1024;
constexpr std::uint64_t mostFolds = 3;

// The number of samples; 0 for data that are refused or too wide for dense rows.
std::uint64_t sampleCount(const std::string& path, const ZelSvmOpt& options) {
  std::uint64_t count = 0;
  zelfuzz::accepts([&] {
    zelsvm::SparseFileReader<double> reader(path, options.indexBase);
    reader.read();
    if (!options.denseMatrix || reader.cols() <= mostColumns) count = reader.rows();
  });
  return count;
}

// Support vectors without any stored value vanish when a model is read, and with the last of them
// the model.
bool holdsVectors(const std::string& model) {
  const auto vectors = model.find("\nSV:\n");
  return vectors != std::string::npos && model.find(':', vectors + 5) != std::string::npos;
}

bool train(ZelSvmOpt& options, const MemoryFile& data, const MemoryFile& model) {
  options.inputFile = data.path();
  options.modelFile = model.path();
  options.outputFile.clear();
  options.maxIterations = mostIterations;
  options.foldCount = std::min(options.foldCount, mostFolds);
  options.randomSeed = 1;
  return zelfuzz::run(options);
}

void predict(ZelSvmOpt& options, std::uint64_t samples) {
  const MemoryFile output;
  options.toolName = "zelsvm-predict";
  options.outputFile = output.path();
  options.probability = false;
  zelfuzz::require(zelfuzz::run(options), "prediction takes what training wrote");
  const std::string text = output.text();
  zelfuzz::require(
      static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n')) == samples,
      "a prediction per sample");
}

void trainAndPredict(ZelSvmOpt options, const MemoryFile& data) {
  const MemoryFile model;
  const std::uint64_t samples = sampleCount(data.path(), options);
  if (samples == 0 || !train(options, data, model)) return;
  options.strict = false;
  if (holdsVectors(model.text())) predict(options, samples);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text = zelfuzz::textOf(bytes, size);
  const std::size_t firstLine = std::min(text.find('\n'), text.size());
  std::vector<std::string> words = {"zelsvm-train", "-q"};
  for (std::string& word : zelfuzz::wordsOf(text.substr(0, firstLine), ' '))
    words.push_back(std::move(word));
  const MemoryFile data(text.substr(firstLine));
  zelfuzz::accepts([&] { trainAndPredict(zelfuzz::parse(words), data); });
  return 0;
}
