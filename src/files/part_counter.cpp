#include "files/part_counter.h"

#include <algorithm>

#include "base/errors.h"
#include "files/sample_line.h"

namespace zelsvm {

void PartCounter::count(const zel::CTextFile& file, Counting counting, FilePart& part) const {
  zel::LineReader lines = file.linesIn(part.range);
  for (std::string_view line; lines.readLine(line); ++part.lines)
    if (counting == Counting::exact || !countLineQuickly(line, part)) countLine(line, part);
  part.lastLineEnded = lines.lastLineEnded();
}

void PartCounter::countLine(std::string_view line, FilePart& part) const {
  SampleLine tokens(line);
  std::uint64_t leadingCount = 0;
  while (leadingCount + 1 < classCount && !tokens.token().empty()) ++leadingCount;
  std::uint64_t pairs = 0;
  std::uint32_t largest = part.maxIndex;
  for (std::uint32_t index = 0; tokens.nextIndex(index); ++pairs) {
    if (index < indexBase)
      throw zel::RuntimeException("Base index underflow detected in sparse data");
    largest = std::max(largest, index);
  }
  part.maxIndex = largest;
  part.pairs += pairs;
  if (pairs > 0)
    ++part.rows;
  else if (modelFile && !SampleLine(line).token().empty())
    part.skipped.push_back(part.rows + part.skipped.size());
}

// False for a line that does not end in a pair of ordinary form, or that may have its pairs behind
// more than one number.
bool PartCounter::countLineQuickly(std::string_view line, FilePart& part) const {
  const SampleLine pairs(line);
  std::uint32_t index = 0;
  if (classCount != 2 || !pairs.lastIndex(index)) return false;
  part.maxIndex = std::max(part.maxIndex, index);
  part.pairs += pairs.colonCount();
  ++part.rows;
  return true;
}

}  // namespace zelsvm
