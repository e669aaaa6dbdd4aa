#include "files/models/class_sizes.h"

#include "base/errors.h"

namespace zelsvm {

void throwLoadingError() { throw zel::RuntimeException("Error in loading SVM numeric values"); }

void settleClassSizes(ModelHeader& header, std::uint64_t lineCount,
                      const std::vector<std::uint64_t>& skippedLines) {
  if (lineCount < header.totalVectors) throwLoadingError();
  if (header.classSizes.empty()) return;
  if (header.classSizes.size() != header.classCount) throwLoadingError();
  auto skipped = skippedLines.begin();
  std::uint64_t classEnd = 0;
  for (int& size : header.classSizes) {
    if (size < 0) throwLoadingError();
    classEnd += static_cast<std::uint64_t>(size);
    for (; skipped != skippedLines.end() && *skipped < classEnd; ++skipped) --size;
  }
  if (classEnd != lineCount) throwLoadingError();
}

}  // namespace zelsvm
