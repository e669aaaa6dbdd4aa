#include "data/sparse_matrix.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "base/memory.h"
#include "data/bounds.h"
#include "data/scaled_sparse_rows.h"

namespace zelmag {

using zelsvm::HostVector;

namespace {

std::uint64_t selectedValueCount(const int* offsets, const zel::IndexList<>& selection) {
  std::uint64_t count = 0;
  for (std::uint64_t k = 0; k < selection.size(); ++k)
    count += static_cast<std::uint64_t>(offsets[selection[k] + 1] - offsets[selection[k]]);
  requireOffsetRange(count);
  return count;
}

}  // namespace

template <typename T>
SparseMatrix<T>::SparseMatrix(HostVector<T>&& values, HostVector<int>&& columnIndices,
                              HostVector<int>&& rowOffsets, FeatureNumbers features,
                              std::uint64_t rows)
    : AbstractMatrix<T>(std::move(features), rows),
      elements(std::move(values)),
      columns(std::move(columnIndices)),
      offsets(std::move(rowOffsets)) {
  for (std::uint64_t i = 0; i < rows; ++i) {
    T sum = 0;
    for (std::uint64_t k = rowBegin(i); k < rowEnd(i); ++k) sum += elements[k] * elements[k];
    this->norms.set(i, sum);
  }
}

template <typename T>
SparseMatrix<T>::SparseMatrix(const SparseMatrix& source, const zel::IndexList<>& selection)
    : AbstractMatrix<T>(source.features(), selection.size()),
      elements(selectedValueCount(source.offsets.data(), selection)),
      columns(elements.size()),
      offsets(selection.size() + 1) {
  std::uint64_t next = 0;
  offsets.set(0, 0);
  for (std::uint64_t k = 0; k < selection.size(); ++k) {
    const std::uint64_t begin = source.rowBegin(selection[k]);
    const std::uint64_t count = source.rowEnd(selection[k]) - begin;
    if (count != 0) {
      std::memcpy(elements.at(next), source.elements.at(begin), count * sizeof(T));
      std::memcpy(columns.at(next), source.columns.at(begin), count * sizeof(int));
    }
    next += count;
    offsets.set(k + 1, static_cast<int>(next));
  }
  this->inheritRows(source, selection);
}

template <typename T>
std::uint64_t SparseMatrix<T>::rowBegin(std::uint64_t row) const {
  return static_cast<std::uint64_t>(offsets.data()[row]);
}

template <typename T>
std::uint64_t SparseMatrix<T>::rowEnd(std::uint64_t row) const {
  return static_cast<std::uint64_t>(offsets.data()[row + 1]);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> SparseMatrix<T>::scaledCopy(
    const zel::Interval& range, const HostVector<zel::Interval>& bounds) const {
  const std::uint64_t count = scaledValueCount(range, bounds);
  requireOffsetRange(count);
  HostVector<T> newValues(count);
  HostVector<int> newColumns(count);
  HostVector<int> newOffsets(this->rows() + 1);
  exportScaled(newValues.data(), newColumns.data(), newOffsets.data(), range, bounds);
  return std::make_unique<SparseMatrix>(std::move(newValues), std::move(newColumns),
                                        std::move(newOffsets), this->features(), this->rows());
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> SparseMatrix<T>::subset(
    const zel::IndexList<>& selection) const {
  return std::unique_ptr<AbstractMatrix<T>>(new SparseMatrix(*this, selection));
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> SparseMatrix<T>::moved(const ColumnMove& move) const {
  HostVector<T> newValues(elements.size());
  HostVector<int> newColumns(elements.size());
  HostVector<int> newOffsets(this->rows() + 1);
  std::uint64_t next = 0;
  newOffsets.set(0, 0);
  for (std::uint64_t i = 0; i < this->rows(); ++i) {
    for (std::uint64_t k = rowBegin(i); k < rowEnd(i); ++k) {
      const int column = move.columns[static_cast<std::uint64_t>(columns[k])];
      if (column < 0) continue;
      newValues.set(next, elements[k]);
      newColumns.set(next++, column);
    }
    newOffsets.set(i + 1, static_cast<int>(next));
  }
  newValues.resize(next);
  newColumns.resize(next);
  return std::make_unique<SparseMatrix>(std::move(newValues), std::move(newColumns),
                                        std::move(newOffsets), move.features, this->rows());
}

template <typename T>
void SparseMatrix<T>::copyRow(T* target, std::uint64_t row, bool clear) const {
  if (clear) std::fill_n(target, this->cols(), T{0});
  for (std::uint64_t k = rowBegin(row); k < rowEnd(row); ++k) target[columns[k]] = elements[k];
}

template <typename T>
void SparseMatrix<T>::collectBounds(HostVector<zel::Interval>& bounds) const {
  // Both arrays are checked as one, as neither is touched before both are allocated.
  zel::requireHostMemory(this->cols(), Multibound<T>::columnBytes + sizeof(std::uint64_t));
  Multibound<T> found(this->cols());
  std::vector<std::uint64_t> presentRows(this->cols(), 0);
  AscendingRow<T> row;
  for (std::uint64_t i = 0; i < this->rows(); ++i) {
    const std::uint64_t count = row.assign(columns.data(), elements.data(), rowBegin(i), rowEnd(i));
    for (std::uint64_t k = 0; k < count; ++k) {
      const auto j = static_cast<std::uint64_t>(row.columns[k]);
      // A row without this column came before: its 0 was the first value.
      if (presentRows[j] == 0 && i != 0) found.add(j, 0);
      found.add(j, row.values[k]);
      ++presentRows[j];
    }
  }
  for (std::uint64_t j = 0; j < this->cols(); ++j)
    if (presentRows[j] != this->rows()) found.add(j, 0);
  found.store(bounds);
}

template <typename T>
std::uint64_t SparseMatrix<T>::scaledValueCount(const zel::Interval& range,
                                                const HostVector<zel::Interval>& bounds) const {
  const ScaledSparseRows<T> scaled(range, bounds, this->cols());
  AscendingRow<T> row;
  std::uint64_t count = 0;
  for (std::uint64_t i = 0; i < this->rows(); ++i) {
    const std::uint64_t stored =
        row.assign(columns.data(), elements.data(), rowBegin(i), rowEnd(i));
    scaled.forEach(row, stored, [&count](int, T) { ++count; });
  }
  return count;
}

template <typename T>
void SparseMatrix<T>::exportScaled(T* values, int* columnIndices, int* rowOffsets,
                                   const zel::Interval& range,
                                   const HostVector<zel::Interval>& bounds) const {
  const ScaledSparseRows<T> scaled(range, bounds, this->cols());
  AscendingRow<T> row;
  std::uint64_t next = 0;
  rowOffsets[0] = 0;
  for (std::uint64_t i = 0; i < this->rows(); ++i) {
    const std::uint64_t stored =
        row.assign(columns.data(), elements.data(), rowBegin(i), rowEnd(i));
    scaled.forEach(row, stored, [&](int column, T v) {
      values[next] = v;
      columnIndices[next++] = column;
    });
    requireOffsetRange(next);
    rowOffsets[i + 1] = static_cast<int>(next);
  }
}

template class SparseMatrix<double>;

}  // namespace zelmag
