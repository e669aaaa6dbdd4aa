// Parsing of a model file's header.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/output/file_warnings.h"
#include "files/models/model_header.h"
#include "files/models/model_scale_reader.h"
#include "files/sample_line.h"

namespace zelsvm {

// Takes the header's lines one by one. Unknown lines are ignored, and a keyword that comes again
// replaces what it gave before; both are warned of, like texts that are no numbers, lines that the
// kernel function needs and the header lacks, and labels that are the same.
class ModelHeaderReader {
 public:
  // A "BaseIdx:" line replaces indexBase. All three must outlive the reader.
  ModelHeaderReader(ModelHeader& header, std::uint64_t& indexBase, zel::FileWarnings& warnings)
      : header(header), indexBase(indexBase), warnings(warnings), scale(header, warnings) {}

  // Takes the line that the warnings have begun; true for the line that ends the header. Throws
  // RuntimeException for a list that is too short for the number of classes read so far, for no
  // classes, and for an index base but 0 and 1; AppException for a count that is no number.
  bool readLine(std::string_view line);

 private:
  // Each reads what stands behind its keywords; false for other keywords.
  bool readValues(std::string_view keyword, SampleLine& line);
  bool readList(std::string_view keyword, SampleLine& line);
  bool readCount(std::string_view keyword, SampleLine& line);
  void readNumbers(std::string_view keyword, SampleLine& line, std::uint64_t count,
                   std::vector<double>& numbers);
  void readSizes(SampleLine& line);
  template <typename T>
  T checkedCount(std::string_view token, zel::ParsedNumber<T> parsed) const;
  void warnOfEqualLabels(SampleLine line);
  void warnOfMissing();

  ModelHeader& header;
  std::uint64_t& indexBase;
  zel::FileWarnings& warnings;
  ModelScaleReader scale;
  std::set<std::string, std::less<>> seen;  // keywords
};

}  // namespace zelsvm
