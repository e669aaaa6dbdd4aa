// A model file: prediction with it ends with one line per sample, or refuses it.
#include <algorithm>
#include <string>

#include "fuzzing.h"
#include "memory_file.h"
#include "tool_runs.h"

namespace {

constexpr std::string_view samples = "1 1:0.5 2:-1\n-1 2:2 3:1e3\n2 1:-3\n";

void predict(const std::string& kind, const std::string& data, const std::string& model) {
  const zelfuzz::MemoryFile output;
  if (!zelfuzz::run(zelfuzz::parse({"zelsvm-predict", kind, data, model, output.path()}))) return;
  const std::string text = output.text();
  zelfuzz::require(std::count(text.begin(), text.end(), '\n') == 3, "a prediction per sample");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const zelfuzz::MemoryFile sampleFile(samples);
  const zelfuzz::MemoryFile model(zelfuzz::textOf(data, size));
  predict("-q", sampleFile.path(), model.path());
  predict("-qX", sampleFile.path(), model.path());
  return 0;
}
