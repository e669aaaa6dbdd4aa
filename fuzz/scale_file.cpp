// A scale parameter file: what is restored from it can be saved, and saving what was restored from
// that again changes nothing.
#include <string>

#include "data/svm_scale.h"
#include "fuzzing.h"
#include "memory_file.h"

namespace {

// Saving more than that takes long without showing more.
constexpr std::uint64_t mostFeatures = 1 << 16;

// The text that restoring a file and saving it again gives; empty for a refused one.
std::string saved(const std::string& path) {
  zelsvm::SvmScale<double> scale;
  scale.setRanges({-1, 1}, {0, 0});
  const zelfuzz::MemoryFile output;
  const bool taken = zelfuzz::accepts([&] { scale.restore(path); });
  if (taken && scale.featureCount() <= mostFeatures) scale.save(output.path());
  return output.text();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const zelfuzz::MemoryFile file(zelfuzz::textOf(data, size));
  // The first saving rounds.
  const zelfuzz::MemoryFile first(saved(file.path()));
  const zelfuzz::MemoryFile second(saved(first.path()));
  const zelfuzz::MemoryFile third(saved(second.path()));
  zelfuzz::require(second.text() == third.text(), "saving and restoring changes nothing");
  return 0;
}
