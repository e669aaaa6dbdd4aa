#include "files/user_file_reader.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <filesystem>
#include <new>
#include <system_error>

#include "base/errors.h"
#include "files/models/class_sizes.h"
#include "files/models/model_header_reader.h"

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
    zel::throwAppException("The file %s cannot be read twice.", path.c_str());
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
      zel::throwAppException("The file %s changed while it was read.", path.c_str());
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
  zel::CTextFile file(zel::FileMode::read);
  openFile(file);
  parts.clear();
  if (readHead(file))
    for (const zel::FileRange& range : file.cutAtLines(file.lineBegin(), partLength))
      parts.emplace_back().range = range;
  const PartCounter counter(this->baseIndex, classCount(), modelFile);
  zel::forEachGuarded(parts.size(), partNanoseconds(0.2),
                      [&](std::uint64_t i) { counter.count(file, counting, parts[i]); });
  file.close();
  addUpParts();
  colCount = std::uint64_t{maxIndex} + 1 - this->baseIndex;
  if (colCount == 0 || rowCount == 0) return;
  // The writer ends every line, so this one may have lost the end of its last number.
  if (modelFile && !parts.back().lastLineEnded)
    throw zel::AppException("The last line of the model is cut short.");
  colCount = std::max(colCount, minimumCols);
  if (!modelFile) return;
  std::vector<std::uint64_t> skipped;
  std::uint64_t vectors = 0;
  for (const FilePart& part : parts) {
    for (const std::uint64_t place : part.skipped) skipped.push_back(vectors + place);
    vectors += part.rows + part.skipped.size();
  }
  settleClassSizes(modelHeader, vectors, skipped);
}

template <typename T>
bool UserFileReader<T>::readHead(zel::CTextFile& file) {
  modelHeader = {};
  headerLines = 0;
  warnings.clear();
  std::string_view line;
  bool more = file.readLine(line);
  while (more && SampleLine(line).token().empty()) {
    ++headerLines;
    warnings.beginLine(line);
    more = file.readLine(line);
  }
  modelFile = more && SampleLine(line).token() == keywords::svmType;
  if (!modelFile) return more;
  readHeader(file, line);
  return file.readLine(line);
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
void UserFileReader<T>::addUpParts() {
  std::uint64_t lines = headerLines;
  rowCount = pairCount = 0;
  maxIndex = 0;
  for (FilePart& part : parts) {
    part.linesBefore = lines;
    part.rowsBefore = rowCount;
    part.pairsBefore = pairCount;
    lines += part.lines;
    rowCount += part.rows;
    pairCount += part.pairs;
    maxIndex = std::max(maxIndex, part.maxIndex);
  }
}

template <typename T>
void UserFileReader<T>::allocateRows() {
  valueVector.resize(valueCount());
  leadingVector.resize(rowCount * (classCount() - 1));
}

// Takes a line that has leading numbers and no pair.
template <typename T>
void UserFileReader<T>::warnOfSkipped(std::string_view line, zel::FileWarnings& found) const {
  const std::string_view token = SampleLine(line).token();
  found.forgetLine();
  if (modelFile)
    found.add(token, "support vector", "has no feature and is left out");
  else
    found.add(token, "line", "has no feature and is skipped");
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
