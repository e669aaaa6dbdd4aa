// Reading of data files and model files: what the sparse and the dense reader share.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/files.h"
#include "base/output/file_warnings.h"
#include "base/vectors.h"
#include "data/matrix.h"
#include "files/file_base.h"
#include "files/file_part.h"
#include "files/models/model_header.h"
#include "files/part_counter.h"
#include "files/repeated_features.h"
#include "files/sample_line.h"
#include "threads/first_failure.h"

namespace zelsvm {

// Reads a text file of sample lines "label index:value index:value ...", or a model file, whose
// lines of that form follow a header and start with classCount - 1 coefficients. Built for one
// file, read once; then the vectors can be moved out of the non-const accessors.
template <typename T>
class UserFileReader : public AbstractFileBase<T> {
 public:
  // The file is not touched before read().
  UserFileReader(std::string path, std::uint64_t indexBase)
      : AbstractFileBase<T>(indexBase), path(std::move(path)), warnings(this->path) {}

  // The second pass: reads the file again into arrays of the counted sizes. False when it does not
  // hold just what was counted; the arrays' contents are of no use then.
  virtual bool loadRows(T* values, int* columnIndices, int* rowOffsets, T* leading) = 0;

  // Reads the whole file. There are at least minimumCols columns afterwards. What is ignored or
  // read as something else than it says goes to zel::warn at the end. Throws AppException (file) or
  // RuntimeException (content), and std::bad_alloc.
  void read(std::uint64_t minimumCols = 0);

  // Cuts the file at the line ends behind every so many bytes into the parts that threads read side
  // by side. What is read does not depend on it.
  void setPartLength(std::uint64_t bytes) { partLength = bytes; }

  // Number of values to allocate for what was counted.
  [[nodiscard]] virtual std::uint64_t valueCount() const = 0;

  // Feature values: row-major rows x cols (dense), or the stored entries in file order (sparse).
  // The accessors of vectors throw RuntimeException while there is nothing.
  [[nodiscard]] HostVector<T>& values();
  // rows x (classCount - 1), row-major: the labels of a data file, the coefficients of a model.
  [[nodiscard]] HostVector<T>& leading();
  // A matrix that looks at the arrays read.
  [[nodiscard]] virtual std::unique_ptr<zelmag::AbstractMatrix<T>> matrix() = 0;
  // The header's rho values.
  [[nodiscard]] const std::vector<double>& rho() const;

  [[nodiscard]] std::uint64_t cols() const { return colCount; }
  [[nodiscard]] std::uint64_t rows() const { return rowCount; }
  // Number of index:value pairs, zeros included.
  [[nodiscard]] std::uint64_t valueTotal() const { return pairCount; }
  [[nodiscard]] std::uint64_t classCount() const { return modelHeader.classCount; }
  // Class sizes count the rows that were read.
  [[nodiscard]] const ModelHeader& header() const { return modelHeader; }
  // True if the file starts as a model file does.
  [[nodiscard]] bool isModel() const { return modelFile; }

 protected:
  // Allocates arrays for what was counted and fills them by loadRows. Throws RuntimeException or
  // std::bad_alloc when no arrays can hold that much.
  virtual bool loadArrays() = 0;

  // Allocates values and leading numbers, not cleared.
  void allocateRows();

  [[nodiscard]] T* valueData() { return valueVector.data(); }
  [[nodiscard]] T* leadingData() { return leadingVector.data(); }

  // Second pass: storeOf(part) gives a store for each part, to whose pair(column, value) every pair
  // is handed and to whose endRow() the end of every row, never more of them and no larger columns
  // than were counted. False where the count is not met.
  template <typename StoreOf>
  bool loadParts(T* leading, const StoreOf& storeOf);

 private:
  // Thrown where a part does not hold what was counted.
  struct NotAsCounted {};

  void openFile(zel::CTextFile& file) const;
  // A quick count may ask for more memory than an exact one.
  bool loadIfItFits();
  // First pass: counts rows, pairs and columns, and reads the header of a model file.
  void countRows(std::uint64_t minimumCols, Counting counting);
  // Reads up to the first sample line; false where there is none.
  bool readHead(zel::CTextFile& file);
  void readHeader(zel::CTextFile& file, std::string_view line);
  void addUpParts();
  // Returns the number of columns in use.
  template <typename StoreOf>
  std::uint64_t loadPart(const zel::CTextFile& file, const FilePart& part, T* leading,
                         const StoreOf& storeOf, zel::FileWarnings& found) const;
  void warnOfSkipped(std::string_view line, zel::FileWarnings& found) const;
  // Reads the numbers before the pairs; false for a line without any token.
  bool readLeading(SampleLine& line, T* numbers) const;
  [[nodiscard]] double partNanoseconds(double perByte) const {
    return perByte * static_cast<double>(partLength);
  }

  std::string path;
  zel::FileWarnings warnings;
  ModelHeader modelHeader;
  std::uint64_t colCount = 0;
  std::uint64_t rowCount = 0;
  std::uint64_t pairCount = 0;
  std::uint32_t maxIndex = 0;  // among the counted ones
  bool modelFile = false;
  std::uint64_t headerLines = 0;  // the one that ends the header included
  std::uint64_t partLength = std::uint64_t{256} << 10;
  std::vector<FilePart> parts;
  HostVector<T> valueVector;
  HostVector<T> leadingVector;
};

template <typename T>
template <typename StoreOf>
bool UserFileReader<T>::loadParts(T* leading, const StoreOf& storeOf) {
  zel::CTextFile file(zel::FileMode::read);
  openFile(file);
  std::vector<zel::FileWarnings> found;
  for (const FilePart& part : parts) found.emplace_back(path, part.linesBefore);
  std::vector<std::uint64_t> cols(parts.size());
  try {
    zel::forEachGuarded(parts.size(), partNanoseconds(1.2), [&](std::uint64_t i) {
      const FilePart& part = parts[i];
      cols[i] =
          loadPart(file, part, leading + part.rowsBefore * (classCount() - 1), storeOf, found[i]);
    });
  } catch (const NotAsCounted&) {
    return false;
  }
  for (const zel::FileWarnings& warningsOfPart : found) warnings.append(warningsOfPart);
  file.close();
  const auto widest = std::max_element(cols.begin(), cols.end());
  return *widest == std::uint64_t{maxIndex} + 1 - this->baseIndex;
}

template <typename T>
template <typename StoreOf>
std::uint64_t UserFileReader<T>::loadPart(const zel::CTextFile& file, const FilePart& part,
                                          T* leading, const StoreOf& storeOf,
                                          zel::FileWarnings& found) const {
  zel::LineReader lines = file.linesIn(part.range);
  auto store = storeOf(part);
  const std::uint64_t leadingCount = classCount() - 1;
  HostVector<T> lineLeading(leadingCount);
  const auto base = static_cast<std::uint32_t>(this->baseIndex);
  const std::uint32_t lastColumn = maxIndex - base;
  std::uint64_t lineCount = 0;
  std::uint64_t pairsLeft = part.pairs;
  std::uint64_t row = 0;
  std::uint64_t cols = 0;
  for (std::string_view line; lines.readLine(line); ++lineCount) {
    found.beginLine(line);
    SampleLine tokens(line, &found);
    if (!readLeading(tokens, lineLeading.data())) continue;
    const std::uint64_t most = row == part.rows ? 0 : pairsLeft;
    std::uint64_t pairs = 0;
    bool ascending = true;
    std::uint64_t lineCols = 0;
    std::uint32_t index = 0;
    for (double value = 0; tokens.nextPair(index, value); ++pairs) {
      if (index < base || index - base > lastColumn || pairs == most) throw NotAsCounted{};
      const std::uint32_t column = index - base;
      ascending &= column >= lineCols;
      lineCols = std::max(lineCols, std::uint64_t{column} + 1);
      store.pair(column, value);
    }
    if (pairs == 0) {
      warnOfSkipped(line, found);
      continue;
    }
    pairsLeft -= pairs;
    cols = std::max(cols, lineCols);
    if (!ascending) warnOfRepeats(line, leadingCount, found);
    store.endRow();
    std::copy_n(lineLeading.data(), leadingCount, leading + row * leadingCount);
    ++row;
  }
  if (row != part.rows || pairsLeft > 0 || lineCount != part.lines ||
      lines.lastLineEnded() != part.lastLineEnded)
    throw NotAsCounted{};
  return cols;
}

}  // namespace zelsvm
