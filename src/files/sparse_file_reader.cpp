#include "files/sparse_file_reader.h"

#include <limits>
#include <string>

#include "base/errors.h"

namespace zelsvm {
namespace {

// Writes one entry after the other.
template <typename T>
struct SparseStore {
  T* values;
  int* columnIndices;
  int* rowEnds;
  int stored;

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
  return this->loadParts(leading, [&](const FilePart& part) {
    return SparseStore<T>{values, columnIndices, rowOffsets + 1 + part.rowsBefore,
                          static_cast<int>(part.pairsBefore)};
  });
}

template <typename T>
bool SparseFileReader<T>::loadArrays() {
  constexpr std::uint64_t limit = std::numeric_limits<int>::max();
  if (this->cols() > limit)
    throw zel::RuntimeException(("The feature index " +
                                 std::to_string(this->cols() - 1 + this->baseIndex) +
                                 " is too large for sparse data.")
                                    .c_str());
  if (this->valueTotal() > limit)
    throw zel::RuntimeException("There are too many values for sparse rows.");
  this->allocateRows();
  columnVector.resize(this->valueTotal());
  offsetVector.resize(this->rows() + 1);
  return loadRows(this->valueData(), columnVector.data(), offsetVector.data(), this->leadingData());
}

template <typename T>
std::unique_ptr<zelmag::AbstractMatrix<T>> SparseFileReader<T>::matrix() {
  return zelmag::createMatrix<T>(this->values().data(), columnIndices().data(), rowOffsets().data(),
                                 this->cols(), this->rows());
}

template class SparseFileReader<double>;

}  // namespace zelsvm
