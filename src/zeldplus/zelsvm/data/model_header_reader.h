// Parsing of a model file's header.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "zeldplus/zelsvm/data/model_header.h"
#include "zeldplus/zelsvm/data/sample_line.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Takes the header's lines one by one. Unknown lines are ignored, and a keyword that comes again
// replaces what it gave before.
class ModelHeaderReader {
 public:
  // A "BaseIdx:" line replaces indexBase. Both must outlive the reader.
  ModelHeaderReader(ModelHeader& header, std::uint64_t& indexBase)
      : header(header), indexBase(indexBase) {}

  // True for the line that ends the header. Throws RuntimeException for a list that is too short
  // for the number of classes read so far, for no classes, and for an index base but 0 and 1.
  bool readLine(std::string_view line);

 private:
  enum class Block { none, features, targets };

  void readContinuation(SampleLine line);
  void readCount(std::string_view keyword, std::uint32_t count);
  bool readList(std::string_view keyword, SampleLine line);
  void readScale(std::string_view keyword, SampleLine line);

  ModelHeader& header;
  std::uint64_t& indexBase;
  Block block = Block::none;
};

// Takes the support-vector lines that were skipped out of their classes' sizes; the position of a
// line decides its class. lineCount counts all lines, skippedLines are zero-based and ascending.
// Throws RuntimeException when the lines are fewer than announced or the sizes do not add up to
// them.
void settleClassSizes(ModelHeader& header, std::uint64_t lineCount,
                      const std::vector<std::uint64_t>& skippedLines);

// Throws RuntimeException "Error in loading SVM numeric values".
[[noreturn]] void throwLoadingError();

}  // namespace zelsvm::inline ZEL_PLATFORM
