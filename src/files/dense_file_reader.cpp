#include "files/dense_file_reader.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace zelsvm {
namespace {

// Writes into zero-filled rows.
template <typename T>
struct DenseStore {
  T* row;
  std::uint64_t cols;

  void pair(std::uint64_t column, double value) { row[column] = value; }
  void endRow() { row += cols; }
};

// Rows as wide as the largest index, which may be a slip.
class RowsDoNotFit : public std::bad_alloc {
 public:
  explicit RowsDoNotFit(std::uint64_t largestIndex) {
    std::snprintf(text, sizeof text, "Dense rows up to feature index %lu do not fit into memory.",
                  largestIndex);
  }
  [[nodiscard]] const char* what() const noexcept override { return text; }

 private:
  char text[96];
};

}  // namespace

template <typename T>
bool DenseFileReader<T>::loadRows(T* values, int* /*columnIndices*/, int* /*rowOffsets*/,
                                  T* leading) {
  return this->loadParts(leading, [&, cols = this->cols()](const FilePart& part) {
    T* const rows = values + part.rowsBefore * cols;
    std::fill_n(rows, part.rows * cols, T{0});
    return DenseStore<T>{rows, cols};
  });
}

template <typename T>
bool DenseFileReader<T>::loadArrays() {
  try {
    zel::requireHostMemory(this->rows(), this->cols() * sizeof(T));
    this->allocateRows();
  } catch (const std::bad_alloc&) {
    throw RowsDoNotFit(this->cols() - 1 + this->baseIndex);
  }
  return loadRows(this->valueData(), nullptr, nullptr, this->leadingData());
}

template <typename T>
std::unique_ptr<zelmag::AbstractMatrix<T>> DenseFileReader<T>::matrix() {
  return zelmag::createMatrix<T>(this->values().data(), nullptr, nullptr, this->cols(),
                                 this->rows());
}

template class DenseFileReader<double>;

}  // namespace zelsvm
