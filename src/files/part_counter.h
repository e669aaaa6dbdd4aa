// The first look at a part of a file: what it holds.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/files.h"
#include "files/file_part.h"

namespace zelsvm {

// Looking at every index takes half as long as reading. The quick count takes every colon for a
// pair and a line's last index for its largest, as they nearly always are; reading tells.
enum class Counting { quick, exact };

class PartCounter {
 public:
  PartCounter(std::uint64_t indexBase, std::uint64_t classCount, bool modelFile)
      : indexBase(indexBase), classCount(classCount), modelFile(modelFile) {}

  // Fills in what is counted. Throws RuntimeException for an index below the base, AppException
  // when the file cannot be read.
  void count(const zel::CTextFile& file, Counting counting, FilePart& part) const;

 private:
  void countLine(std::string_view line, FilePart& part) const;
  bool countLineQuickly(std::string_view line, FilePart& part) const;

  std::uint64_t indexBase;
  std::uint64_t classCount;
  bool modelFile;
};

}  // namespace zelsvm
