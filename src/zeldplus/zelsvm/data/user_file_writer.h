// Writing of data files and model files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zeldplus/inc/zelfiles.h"
#include "zeldplus/inc/zeltextoutput.h"
#include "zeldplus/zelsvm/data/file_base.h"
#include "zeldplus/zelsvm/data/matrix.h"
#include "zeldplus/zelsvm/data/model_header.h"

namespace zelsvm::inline ZEL_PLATFORM {

// All operations throw AppException when the file cannot be written.
template <typename T>
class UserFileWriter : public AbstractFileBase<T> {
 public:
  // Creates or truncates the file.
  UserFileWriter(const std::string& path, std::uint64_t indexBase);

  // Writes each row as a line of k - 1 leading numbers (none if leading is null or k < 2) and
  // index:value pairs. leading is rows x (k - 1), row-major. Of a sparse matrix every stored entry
  // is written, of a dense one the values that are not 0.
  void writeRows(const zelmag::AbstractMatrix<T>& matrix, const T* leading, std::uint64_t k);

  // Writes the lines before the support vectors. A gamma of 0 is written as 1 / featureCount; lists
  // that are empty get no line, but featureBounds is filled up with (0, 0) to featureCount.
  void writeModelHeader(const ModelHeader& header, std::uint64_t featureCount);

  // Must end the writing: throws when the file is not complete.
  void close();

 private:
  void writeScale(const ModelHeader& header, std::uint64_t featureCount);
  // The keyword, the values with a blank before each, and a line feed.
  template <typename Values>
  void writeLine(std::string_view keyword, const Values& values);

  zel::CTextFile file;
  zel::TextOutput output;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
