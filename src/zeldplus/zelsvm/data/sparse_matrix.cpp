#include "zeldplus/zelsvm/data/sparse_matrix.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "zeldplus/inc/zelmemory.h"
#include "zeldplus/zelsvm/data/bounds.h"
#include "zeldplus/zelsvm/data/scaled_sparse_rows.h"

namespace zelmag::inline ZEL_PLATFORM {

using zel::DeviceVector;
using zelsvm::HostVector;

namespace {

// Rows laid out before one copy takes them to the device: worth the call, and still in the cache.
constexpr std::uint64_t stagedBytes = std::uint64_t{512} << 10;

std::uint64_t selectedValueCount(const int* offsets, const zel::IndexList<>& selection) {
  std::uint64_t count = 0;
  for (std::uint64_t k = 0; k < selection.size(); ++k)
    count += static_cast<std::uint64_t>(offsets[selection[k] + 1] - offsets[selection[k]]);
  requireOffsetRange(count);
  return count;
}

bool ascends(const int* columns, std::uint64_t count) {
  for (std::uint64_t k = 1; k < count; ++k)
    if (columns[k - 1] >= columns[k]) return false;
  return true;
}

}  // namespace

template <typename T>
SparseMatrix<T>::SparseMatrix(HostVector<T>&& values, HostVector<int>&& columnIndices,
                              HostVector<int>&& rowOffsets, std::uint64_t cols, std::uint64_t rows,
                              zellas::SparseContext<T>& context)
    : AbstractMatrix<T>(cols, rows),
      elements(std::move(values)),
      columns(std::move(columnIndices)),
      offsets(std::move(rowOffsets)),
      context(&context) {
  for (std::uint64_t i = 0; i < rows; ++i) {
    T sum = 0;
    for (std::uint64_t k = rowBegin(i); k < rowEnd(i); ++k) sum += elements[k] * elements[k];
    this->norms.set(i, sum);
  }
}

template <typename T>
SparseMatrix<T>::SparseMatrix(const SparseMatrix& source, const zel::IndexList<>& selection)
    : AbstractMatrix<T>(source.cols(), selection.size()),
      elements(selectedValueCount(source.offsets.data(), selection)),
      columns(elements.size()),
      offsets(selection.size() + 1),
      context(source.context) {
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
    const double2& range, const HostVector<double2>& bounds) const {
  const std::uint64_t count = scaledValueCount(range, bounds);
  requireOffsetRange(count);
  HostVector<T> newValues(count);
  HostVector<int> newColumns(count);
  HostVector<int> newOffsets(this->rows() + 1);
  exportScaled(newValues.data(), newColumns.data(), newOffsets.data(), range, bounds);
  return std::make_unique<SparseMatrix>(std::move(newValues), std::move(newColumns),
                                        std::move(newOffsets), this->cols(), this->rows(),
                                        *context);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> SparseMatrix<T>::subset(
    const zel::IndexList<>& selection) const {
  return std::unique_ptr<AbstractMatrix<T>>(new SparseMatrix(*this, selection));
}

template <typename T>
void SparseMatrix<T>::copyRow(T* target, std::uint64_t row, bool clear) const {
  if (clear) std::fill_n(target, this->cols(), T{0});
  for (std::uint64_t k = rowBegin(row); k < rowEnd(row); ++k) target[columns[k]] = elements[k];
}

template <typename T>
void SparseMatrix<T>::collectBounds(HostVector<double2>& bounds) const {
  // Checked together: none of it is touched before all of it has been promised.
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
std::uint64_t SparseMatrix<T>::scaledValueCount(const double2& range,
                                                const HostVector<double2>& bounds) const {
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
                                   const double2& range, const HostVector<double2>& bounds) const {
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

template <typename T>
void SparseMatrix<T>::upload() {
  if (deviceMatrix) return;
  deviceValues = std::make_unique<DeviceVector<T>>(elements);
  deviceColumnIndices = std::make_unique<DeviceVector<int>>(columns);
  deviceRowOffsets = std::make_unique<DeviceVector<int>>(offsets);
  deviceMatrix = std::make_unique<zellas::SparseMatrix<T>>(
      *context, *deviceValues, *deviceColumnIndices, *deviceRowOffsets, this->rows(), this->cols());
}

template <typename T>
bool SparseMatrix<T>::isFullRow(std::uint64_t row) const {
  if (rowEnd(row) - rowBegin(row) != this->cols()) return false;
  const int* const first = columns.at(rowBegin(row));
  for (std::uint64_t j = 0; j < this->cols(); ++j)
    if (static_cast<std::uint64_t>(first[j]) != j) return false;
  return true;
}

template <typename T>
void SparseMatrix<T>::rowProducts(DeviceVector<T>& result, std::uint64_t row) {
  upload();
  if (!deviceRow) deviceRow = std::make_unique<DeviceVector<T>>(this->cols());
  const std::uint64_t begin = rowBegin(row);
  const std::uint64_t count = rowEnd(row) - begin;
  if (isFullRow(row)) {
    deviceRow->copyFrom(*deviceValues, 0, begin, count);
  } else if (!ascends(columns.at(begin), count)) {
    // Repeated columns may be among them, and a scatter has no order that says which one stays.
    rowBuffer.resize(this->cols());
    copyRow(rowBuffer.data(), row, true);
    deviceRow->copyFrom(rowBuffer, 0, 0, this->cols());
  } else {
    zel::clearDeviceMemory(deviceRow->data(), this->cols() * sizeof(T));
    if (count != 0) deviceMatrix->scatterRow(deviceRow->data(), begin, count);
  }
  deviceMatrix->mv(1, deviceRow->data(), 0, result.data());
}

template <typename T>
void SparseMatrix<T>::blockProducts(DeviceVector<T>& block, std::uint64_t blockStride,
                                    DeviceVector<T>& result, std::uint64_t resultStride,
                                    std::uint64_t count) {
  upload();
  deviceMatrix->mm(CUSPARSE_OPERATION_NON_TRANSPOSE, CUSPARSE_OPERATION_NON_TRANSPOSE, count, 1,
                   block.data(), blockStride, 0, result.data(), resultStride);
}

template <typename T>
DeviceVector<T>& SparseMatrix<T>::deviceRows(std::uint64_t first, std::uint64_t count) {
  if (!deviceBlock || deviceBlock->size() < this->cols() * count)
    deviceBlock = std::make_unique<DeviceVector<T>>(this->cols() * count);
  const std::uint64_t most = std::max<std::uint64_t>(1, stagedBytes / (this->cols() * sizeof(T)));
  for (std::uint64_t done = 0; done < count; done += most) {
    const std::uint64_t staged = std::min(most, count - done);
    rowBuffer.resize(staged * this->cols());
    for (std::uint64_t r = 0; r < staged; ++r)
      copyRow(rowBuffer.at(r * this->cols()), first + done + r, true);
    deviceBlock->copyFrom(rowBuffer, done * this->cols(), 0, staged * this->cols());
  }
  return *deviceBlock;
}

template <typename T>
void SparseMatrix<T>::releaseDevice() {
  deviceMatrix.reset();
  deviceValues.reset();
  deviceColumnIndices.reset();
  deviceRowOffsets.reset();
  deviceBlock.reset();
  deviceRow.reset();
}

template class SparseMatrix<double>;

}  // namespace zelmag::inline ZEL_PLATFORM
