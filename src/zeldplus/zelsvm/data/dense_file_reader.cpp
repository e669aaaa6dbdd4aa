#include "zeldplus/zelsvm/data/dense_file_reader.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// Writes into zero-filled rows.
template <typename T>
struct DenseStore {
  T* row;
  std::uint64_t cols;

  void pair(std::uint64_t column, double value) { row[column] = value; }
  void endRow() { row += cols; }
};

}  // namespace

template <typename T>
bool DenseFileReader<T>::loadRows(T* values, int* /*columnIndices*/, int* /*rowOffsets*/,
                                  T* leading) {
  return this->loadLines(leading, DenseStore<T>{values, this->cols()});
}

template <typename T>
bool DenseFileReader<T>::loadArrays() {
  zel::requireHostMemory(this->rows(), this->cols() * sizeof(T));
  this->allocateRows();
  this->values().fill(0);
  return loadRows(this->valueData(), nullptr, nullptr, this->leadingData());
}

template class DenseFileReader<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
