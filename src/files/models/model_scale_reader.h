// The lines about scaling in a model file's header: ranges, and the bounds below them.
#pragma once

#include <string_view>

#include "base/output/file_warnings.h"
#include "files/models/model_header.h"
#include "files/sample_line.h"

namespace zelsvm {

class ModelScaleReader {
 public:
  // Both must outlive the reader.
  ModelScaleReader(ModelHeader& header, zel::FileWarnings& warnings)
      : header(header), warnings(warnings) {}

  // Whether the line belongs below the range before it, as lines that begin with a blank do.
  bool continues(std::string_view line);
  // Takes such a line; one without all of its numbers is ignored.
  void readBounds(SampleLine line);
  // Takes what stands behind a range's keyword; false for other keywords.
  bool readRange(std::string_view keyword, SampleLine& line);
  void warnOfMissing();

 private:
  enum class Block { none, features, targets };
  static constexpr std::string_view lacksNumber = "lacks a number and is ignored";

  bool readFeature(SampleLine& line);

  ModelHeader& header;
  zel::FileWarnings& warnings;
  Block block = Block::none;
  bool hasTargetBounds = false;
};

}  // namespace zelsvm
