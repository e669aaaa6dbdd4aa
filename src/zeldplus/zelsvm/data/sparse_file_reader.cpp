#include "zeldplus/zelsvm/data/sparse_file_reader.h"

#include <limits>

#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// Writes one entry after the other.
template <typename T>
struct SparseStore {
  T* values;
  int* columnIndices;
  int* rowEnds;
  int stored = 0;

  void pair(std::uint64_t column, double value) {
    values[stored] = value;
    columnIndices[stored] = static_cast<int>(column);
    ++stored;
  }
  void endRow() { *rowEnds++ = stored; }
};

}  // namespace

template <typename T>
HostVector<int>& SparseFileReader<T>::columnIndices() {
  if (columnVector.size() == 0) throw zel::RuntimeException("The SVM sparse columns are missing.");
  return columnVector;
}

template <typename T>
HostVector<int>& SparseFileReader<T>::rowOffsets() {
  if (offsetVector.size() == 0) throw zel::RuntimeException("The SVM sparse rows are missing.");
  return offsetVector;
}

template <typename T>
bool SparseFileReader<T>::loadRows(T* values, int* columnIndices, int* rowOffsets, T* leading) {
  rowOffsets[0] = 0;
  return this->loadLines(leading, SparseStore<T>{values, columnIndices, rowOffsets + 1});
}

template <typename T>
bool SparseFileReader<T>::loadArrays() {
  constexpr std::uint64_t limit = std::numeric_limits<int>::max();
  if (this->cols() > limit)
    throw zel::RuntimeException("A feature index is too large for sparse data");
  if (this->valueTotal() > limit) throw zel::RuntimeException("Too many values for sparse data");
  this->allocateRows();
  columnVector.resize(this->valueTotal());
  offsetVector.resize(this->rows() + 1);
  return loadRows(this->valueData(), columnVector.data(), offsetVector.data(), this->leadingData());
}

template class SparseFileReader<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
