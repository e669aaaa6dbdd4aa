// Writing of data files and model files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zeldplus/inc/zelfiles.h"
#include "zeldplus/inc/zeltextoutput.h"
#include "zeldplus/zelsvm/data/file_base.h"
#include "zeldplus/zelsvm/data/model_header.h"

namespace zelsvm::inline ZEL_PLATFORM {

// All operations throw AppException when the file cannot be written.
template <typename T>
class UserFileWriter : public AbstractFileBase<T> {
 public:
  // Creates or truncates the file.
  UserFileWriter(const std::string& path, std::uint64_t indexBase);

  // Writes rows lines of k - 1 leading numbers (none if leading is null or k < 2) and index:value
  // pairs. leading is rows x (k - 1), row-major. With row offsets every stored entry is
  // written (there may be none, and then no values and column indices), else of the row-major
  // rows x cols values those that are not 0.
  void writeRows(const T* values, std::uint64_t cols, std::uint64_t rows, const T* leading,
                 std::uint64_t k, const int* columnIndices, const int* rowOffsets);

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
