// Writing of data files and model files.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "base/files.h"
#include "base/output/text_output.h"
#include "data/matrix.h"
#include "files/file_base.h"
#include "files/models/model_header.h"

namespace zelsvm {

// All operations throw AppException when the file cannot be written.
template <typename T>
class UserFileWriter : public AbstractFileBase<T> {
 public:
  UserFileWriter(const std::string& path, std::uint64_t indexBase);

  // Writes each row as a line of k - 1 leading numbers (none if leading is null or k < 2) and
  // index:value pairs. leading is rows x (k - 1), row-major, with six digits or more where these
  // are further from a number than the resolution. Of a sparse matrix every stored entry is
  // written, of a dense one the values that are not 0.
  void writeRows(const zelmag::AbstractMatrix<T>& matrix, const T* leading, std::uint64_t k,
                 double leadingResolution = std::numeric_limits<double>::infinity());

  // Writes the lines before the support vectors. A gamma of 0 is written as 1 / featureCount; lists
  // that are empty get no line, but featureBounds is filled up with (0, 0) to featureCount, unless
  // few of very many features are in use.
  void writeModelHeader(const ModelHeader& header, std::uint64_t featureCount);

  // zel::CFile::finish.
  void finish();
  // Must end the writing: without it there is no file.
  void close();

 private:
  void putPairs(const zelmag::AbstractMatrix<T>& matrix, std::uint64_t row,
                zel::TextOutput& text) const;
  void writeScale(const ModelHeader& header, std::uint64_t featureCount);
  void writeBounds(std::uint64_t feature, const zel::Interval& bounds);
  void writePair(std::string_view keyword, const zel::Interval& pair);
  // The keyword, the values with a blank before each, and a line feed.
  template <typename Values>
  void writeLine(std::string_view keyword, const Values& values);
  template <typename Values>
  void writeLine(std::string_view keyword, const Values& values, double resolution);

  zel::CTextFile file;
  zel::TextOutput output;
};

}  // namespace zelsvm
