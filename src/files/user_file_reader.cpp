#include "files/user_file_reader.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <filesystem>
#include <new>
#include <system_error>

#include "base/errors.h"
#include "files/class_sizes.h"
#include "files/model_header_reader.h"

namespace zelsvm {
namespace {

// Empty however often it is read.
bool isNullDevice(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
         status.st_rdev == makedev(1, 3);
}

}  // namespace

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
  if (std::filesystem::is_other(path, unknown) && !isNullDevice(path))
    zel::throwAppException("not a file that can be read twice: %s", path.c_str());
  file.open(path);
}

template <typename T>
void UserFileReader<T>::read(std::uint64_t minimumCols) {
  countRows(minimumCols, Counting::quick);
  if (colCount == 0 || rowCount == 0 || !loadIfItFits()) {
    countRows(minimumCols, Counting::exact);
    if (colCount == 0 || rowCount == 0)
      throw zel::RuntimeException("No proper data is found in input file");
    if (!loadArrays())
      zel::throwAppException("the file changed while it was read: %s", path.c_str());
  }
  warnings.tell();
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
  warnings.clear();
  zel::CTextFile file(zel::FileMode::read);
  openFile(file);
  std::string_view line;
  bool more = file.readLine(line);
  while (more && SampleLine(line).token().empty()) {
    ++headerLines;
    warnings.beginLine(line);
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
  ModelHeaderReader reader(modelHeader, this->baseIndex, warnings);
  do {
    ++headerLines;
    warnings.beginLine(line);
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

// Takes a line that has leading numbers and no pair.
template <typename T>
void UserFileReader<T>::warnOfSkipped(std::string_view line) {
  const std::string_view token = SampleLine(line).token();
  warnings.forgetLine();
  if (modelFile)
    warnings.add(token, "support vector", "has no feature and is left out");
  else
    warnings.add(token, "line", "has no feature and is skipped");
}

template <typename T>
bool UserFileReader<T>::readLeading(SampleLine& line, T* numbers) const {
  const char* const what = modelFile ? "coefficient" : "label";
  for (std::uint64_t i = 0; i + 1 < classCount(); ++i) {
    const std::string_view token = line.token();
    if (token.empty() && i == 0) return false;
    if (token.empty() || token.find(':') != std::string_view::npos) throwLoadingError();
    numbers[i] = line.number(token, what);
  }
  return true;
}

template class UserFileReader<double>;

}  // namespace zelsvm
