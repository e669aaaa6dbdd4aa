#include "data/matrix.h"

#include <utility>

#include "base/errors.h"
#include "data/dense_matrix.h"
#include "data/sparse_matrix.h"

namespace zelmag {

using zelsvm::HostVector;

namespace {

HostVector<int> columnsOf(const int* numbers, std::uint64_t count, const FeatureNumbers& features) {
  HostVector<int> columns(count);
  for (std::uint64_t k = 0; k < count; ++k)
    columns.set(k, static_cast<int>(features.find(static_cast<std::uint64_t>(numbers[k]))));
  return columns;
}

}  // namespace

template <typename T>
AbstractMatrix<T>::AbstractMatrix(FeatureNumbers features, std::uint64_t rows)
    : featureNumbers(std::move(features)), rowCount(rows) {
  if (cols() == 0 || rows == 0) throw zel::AppException("Invalid zero data dimensions.");
  norms.resize(rows);
}

template <typename T>
void AbstractMatrix<T>::inheritRows(const AbstractMatrix& source,
                                    const zel::IndexList<>& selection) {
  ids.resize(selection.size());
  const bool hasIds = source.ids.size() != 0;
  for (std::uint64_t k = 0; k < selection.size(); ++k) {
    ids[k] = hasIds ? source.ids[selection[k]] : selection[k];
    norms.set(k, source.norms[selection[k]]);
  }
}

template <typename T>
void AbstractMatrix<T>::setRowIds(const zel::IndexList<>& numbers) {
  ids.resize(numbers.size());
  ids.copyFrom(numbers, 0, 0, numbers.size());
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> movedTo(const FeatureNumbers& features,
                                           const AbstractMatrix<T>& matrix, Unlisted unlisted) {
  if (features.agreesWith(matrix.features())) return nullptr;
  return matrix.moved(columnMove(matrix.features(), features, unlisted));
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> createMatrix(T* values, int* columnIndices, int* rowOffsets,
                                                std::uint64_t cols, std::uint64_t rows) {
  if (rowOffsets == nullptr)
    return std::make_unique<DenseMatrix<T>>(HostVector<T>(rows * cols, values), cols, rows);
  const auto count = static_cast<std::uint64_t>(rowOffsets[rows]);
  FeatureNumbers features = featuresInUse(columnIndices, count, cols);
  HostVector<int> columns = features.isListed() ? columnsOf(columnIndices, count, features)
                                                : HostVector<int>(count, columnIndices);
  return std::make_unique<SparseMatrix<T>>(HostVector<T>(count, values), std::move(columns),
                                           HostVector<int>(rows + 1, rowOffsets),
                                           std::move(features), rows);
}

template class AbstractMatrix<double>;
template std::unique_ptr<AbstractMatrix<double>> movedTo(const FeatureNumbers&,
                                                         const AbstractMatrix<double>&, Unlisted);
template std::unique_ptr<AbstractMatrix<double>> createMatrix(double*, int*, int*, std::uint64_t,
                                                              std::uint64_t);

}  // namespace zelmag
