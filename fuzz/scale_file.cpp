// A scale parameter file: what is restored from it can be saved, and saving what was restored from
// that again changes nothing.
#include <string>

#include "fuzzing.h"
#include "memory_file.h"
#include "zeldplus/zelsvm/data/svm_scale.h"

namespace {

// Saving more than that takes long without showing more.
constexpr std::uint64_t mostFeatures = 1 << 16;

// The text that restoring a file and saving it again gives; empty for a refused one.
std::string saved(const std::string& path, std::uint64_t indexBase) {
  zelsvm::SvmScale<double> scale;
  scale.setRanges({-1, 1}, {0, 1});
  const zelfuzz::MemoryFile output;
  const bool taken = zelfuzz::accepts([&] { scale.restore(path, indexBase); });
  if (taken && scale.featureCount() <= mostFeatures) scale.save(output.path());
  return output.text();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const zelfuzz::MemoryFile file(zelfuzz::textOf(data, size));
  // Counted from 0, the last feature is not restored.
  saved(file.path(), 0);
  // The first saving rounds to six digits.
  const zelfuzz::MemoryFile first(saved(file.path(), 1));
  const zelfuzz::MemoryFile second(saved(first.path(), 1));
  const zelfuzz::MemoryFile third(saved(second.path(), 1));
  zelfuzz::require(second.text() == third.text(), "saving and restoring changes nothing");
  return 0;
}
