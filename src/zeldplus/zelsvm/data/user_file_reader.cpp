#include "zeldplus/zelsvm/data/user_file_reader.h"

#include <filesystem>
#include <new>
#include <system_error>

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/data/model_header_reader.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
HostVector<T>& UserFileReader<T>::values() {
  if (valueVector.size() == 0) throw zel::RuntimeException("The SVM vectors are absent.");
  return valueVector;
}

template <typename T>
HostVector<T>& UserFileReader<T>::leading() {
  if (leadingVector.size() == 0) throw zel::RuntimeException("The SVM coefficients are absent.");
  return leadingVector;
}

template <typename T>
const std::vector<double>& UserFileReader<T>::rho() const {
  if (modelHeader.rho.empty()) throw zel::RuntimeException("The SVM rho values are absent.");
  return modelHeader.rho;
}

template <typename T>
void UserFileReader<T>::openFile(zel::CTextFile& file) const {
  std::error_code unknown;
  if (std::filesystem::is_other(path, unknown))
    zel::throwAppException("not a file that can be read twice: %s", path.c_str());
  file.open(path);
}

template <typename T>
void UserFileReader<T>::read(std::uint64_t minimumCols) {
  countRows(minimumCols, Counting::quick);
  if (colCount != 0 && rowCount != 0 && loadIfItFits()) return;
  countRows(minimumCols, Counting::exact);
  if (colCount == 0 || rowCount == 0)
    throw zel::RuntimeException("No proper data is found in input file");
  if (!loadArrays()) zel::throwAppException("the file changed while it was read: %s", path.c_str());
}

template <typename T>
bool UserFileReader<T>::loadIfItFits() {
  try {
    return loadArrays();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

template <typename T>
void UserFileReader<T>::countRows(std::uint64_t minimumCols, Counting counting) {
  modelHeader = {};
  rowCount = pairCount = headerLines = 0;
  maxIndex = 0;
  skippedLines.clear();
  zel::CTextFile file(zel::FileMode::read);
  openFile(file);
  std::string_view line;
  bool more = file.readLine(line);
  while (more && SampleLine(line).token().empty()) {
    ++headerLines;
    more = file.readLine(line);
  }
  modelFile = more && SampleLine(line).token() == keywords::svmType;
  if (modelFile) {
    readHeader(file, line);
    more = file.readLine(line);
  }
  for (; more; more = file.readLine(line))
    if (counting == Counting::exact || !countLineQuickly(line)) countLine(line);
  file.close();
  colCount = std::uint64_t{maxIndex} + 1 - this->baseIndex;
  if (colCount == 0 || rowCount == 0) return;
  // The writer ends every line, so this one may have lost the end of its last number.
  if (modelFile && !file.lastLineEnded())
    throw zel::AppException("The last line of the model is cut short.");
  colCount = std::max(colCount, minimumCols);
  if (modelFile) settleClassSizes(modelHeader, rowCount + skippedLines.size(), skippedLines);
}

template <typename T>
void UserFileReader<T>::readHeader(zel::CTextFile& file, std::string_view line) {
  ModelHeaderReader reader(modelHeader, this->baseIndex);
  do {
    ++headerLines;
    if (reader.readLine(line)) return;
  } while (file.readLine(line));
}

template <typename T>
void UserFileReader<T>::countLine(std::string_view line) {
  SampleLine tokens(line);
  std::uint64_t leadingCount = 0;
  while (leadingCount + 1 < classCount() && !tokens.token().empty()) ++leadingCount;
  std::uint64_t pairs = 0;
  std::uint32_t largest = maxIndex;
  for (std::uint32_t index = 0; tokens.nextIndex(index); ++pairs) {
    if (index < this->baseIndex)
      throw zel::RuntimeException("Base index underflow detected in sparse data");
    largest = std::max(largest, index);
  }
  maxIndex = largest;
  pairCount += pairs;
  if (pairs > 0)
    ++rowCount;
  else if (modelFile && !SampleLine(line).token().empty())
    skippedLines.push_back(rowCount + skippedLines.size());
}

// False for a line that does not end in a pair of ordinary form, or that may have its pairs behind
// more than one number.
template <typename T>
bool UserFileReader<T>::countLineQuickly(std::string_view line) {
  const SampleLine pairs(line);
  std::uint32_t index = 0;
  if (classCount() != 2 || !pairs.lastIndex(index)) return false;
  maxIndex = std::max(maxIndex, index);
  pairCount += pairs.colonCount();
  ++rowCount;
  return true;
}

template <typename T>
void UserFileReader<T>::allocateRows() {
  valueVector.resize(valueCount());
  leadingVector.resize(rowCount * (classCount() - 1));
}

template <typename T>
bool UserFileReader<T>::readLeading(SampleLine& line, T* numbers) const {
  for (std::uint64_t i = 0; i + 1 < classCount(); ++i) {
    const std::string_view token = line.token();
    if (token.empty() && i == 0) return false;
    if (token.empty() || token.find(':') != std::string_view::npos) throwLoadingError();
    numbers[i] = SampleLine::number(token);
  }
  return true;
}

template class UserFileReader<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
