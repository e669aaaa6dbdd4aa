// The sample lines of a file in parts, so that threads read them side by side.
#pragma once

#include <cstdint>
#include <vector>

#include "base/line_reader.h"

namespace zelsvm {

// A range of the file, and what was counted in it and before it.
struct FilePart {
  zel::FileRange range;
  std::uint64_t lines = 0;
  std::uint64_t rows = 0;
  std::uint64_t pairs = 0;
  std::uint32_t maxIndex = 0;
  bool lastLineEnded = false;
  // Support-vector lines without pairs, by their numbers among the part's support vectors.
  std::vector<std::uint64_t> skipped;

  std::uint64_t linesBefore = 0;
  std::uint64_t rowsBefore = 0;
  std::uint64_t pairsBefore = 0;
};

}  // namespace zelsvm
