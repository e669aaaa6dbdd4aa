#include <algorithm>
#include <functional>
#include <limits>
#include <type_traits>
#include <utility>

#include "library/rows.h"

namespace zelsvm {
namespace {

using detail::Rows;

constexpr std::size_t indexLimit = std::numeric_limits<int>::max();
constexpr const char* outsideMessage = "A column of the sparse rows lies outside of the features.";

// Throws AppException when a column lies outside or stands twice.
void requireColumns(const Rows& content, std::uint64_t row) {
  const auto begin = static_cast<std::size_t>(content.offsets[row]);
  const auto end = static_cast<std::size_t>(content.offsets[row + 1]);
  const auto columns = content.columns.subspan(begin, end - begin);
  for (const int column : columns)
    if (column < 0 || static_cast<std::uint64_t>(column) >= content.features)
      throw AppException(outsideMessage);
  if (std::adjacent_find(columns.begin(), columns.end(), std::greater_equal<>()) == columns.end())
    return;
  std::vector<int> sorted(columns.begin(), columns.end());
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
    throw AppException("A column stands twice in a sparse row.");
}

// So many numbers row after row.
void requireWholeRows(std::size_t numbers, std::size_t features) {
  if (features == 0 || numbers == 0 || numbers % features != 0)
    throw AppException("Dense samples must be whole rows of features, at least one.");
}

template <typename Number>
zelmag::StridedNumbers<Number> numbersOf(const Table<Number>& table) {
  return {table.first, table.rowStride, table.columnStride};
}

template <typename Number>
Samples makeDense(const Table<Number>& numbers, std::vector<double>&& owner) {
  requireWholeRows(std::min<std::size_t>(numbers.rows, 1) * numbers.columns, numbers.columns);
  auto content = std::make_shared<Rows>();
  content->ownedValues = std::move(owner);
  content->table = numbersOf(numbers);
  content->tableColumns = content->features = numbers.columns;
  content->rows = numbers.rows;
  return detail::Access::samples(std::move(content));
}

// The arrays as they are where they have this type, else a copy in it.
template <typename Number, typename Arrays, typename Convert>
std::span<const Number> inType(const Arrays& arrays, std::vector<Number>& copy,
                               const Convert& convert) {
  if (const auto* same = std::get_if<std::span<const Number>>(&arrays)) return *same;
  const auto& other = std::get<1>(arrays);
  copy.resize(other.size());
  std::transform(other.begin(), other.end(), copy.begin(), convert);
  return copy;
}

// Negative ones stay negative. Throws AppException(message) for larger ones than the engine counts.
auto narrowedOr(const char* message) {
  return [message](std::int64_t index) {
    if (index > static_cast<std::int64_t>(indexLimit)) throw AppException(message);
    return index < 0 ? -1 : static_cast<int>(index);
  };
}

// So many rows and columns of kernel values.
template <typename Values>
Samples makeKernel(std::size_t rows, std::size_t columns, Values values, KernelColumns meaning) {
  if (rows == 0 || columns == 0) throw AppException("There must be kernel values, at least one.");
  auto content = std::make_shared<Rows>();
  content->kernel = std::make_shared<detail::GivenKernel>(
      detail::GivenKernel{.values = std::move(values), .columns = meaning});
  content->rows = rows;
  content->features = columns;
  return detail::Access::samples(std::move(content));
}

Samples makeSparse(std::shared_ptr<Rows> content) {
  if (content->features == 0 || content->features > indexLimit || content->offsets.size() < 2)
    throw AppException("Sparse samples must have features and at least one row.");
  const auto offsets = content->offsets;
  if (offsets.front() != 0 || !std::is_sorted(offsets.begin(), offsets.end()) ||
      static_cast<std::size_t>(offsets.back()) != content->values.size() ||
      content->columns.size() != content->values.size())
    throw AppException("The row offsets do not fit the values and columns of the sparse rows.");
  content->rows = offsets.size() - 1;
  for (std::uint64_t row = 0; row < content->rows; ++row) requireColumns(*content, row);
  return detail::Access::samples(std::move(content));
}

}  // namespace

Samples::Samples(std::shared_ptr<const detail::Rows> content) : content(std::move(content)) {}

Samples Samples::dense(std::span<const double> values, std::size_t features) {
  requireWholeRows(values.size(), features);
  return makeDense(Table(values.data(), values.size() / features, features), {});
}

Samples Samples::dense(std::vector<double>&& values, std::size_t features) {
  requireWholeRows(values.size(), features);
  const Table table(std::as_const(values).data(), values.size() / features, features);
  return makeDense(table, std::move(values));
}

Samples Samples::dense(const Table<double>& values) { return makeDense(values, {}); }

Samples Samples::dense(const Table<float>& values) { return makeDense(values, {}); }

Samples Samples::csr(std::span<const double> values, std::span<const int> columns,
                     std::span<const int> rowOffsets, std::size_t features) {
  return makeSparse(std::make_shared<Rows>(
      Rows{.values = values, .columns = columns, .offsets = rowOffsets, .features = features}));
}

Samples Samples::csr(std::vector<double>&& values, std::vector<int>&& columns,
                     std::vector<int>&& rowOffsets, std::size_t features) {
  auto content = std::make_shared<Rows>(Rows{.values = {}, .features = features});
  content->ownedValues = std::move(values);
  content->ownedColumns = std::move(columns);
  content->ownedOffsets = std::move(rowOffsets);
  content->values = content->ownedValues;
  content->columns = content->ownedColumns;
  content->offsets = content->ownedOffsets;
  return makeSparse(std::move(content));
}

Samples Samples::csr(const SparseArrays& arrays) {
  if (arrays.order != Compressed::rows)
    throw AppException("Compressed columns are not read: turn them into compressed rows first.");
  auto content = std::make_shared<Rows>();
  content->features = arrays.features;
  content->values =
      inType(arrays.values, content->ownedValues, [](float value) { return double{value}; });
  content->columns = inType(arrays.columns, content->ownedColumns, narrowedOr(outsideMessage));
  content->offsets =
      inType(arrays.rowOffsets, content->ownedOffsets,
             narrowedOr("Sparse samples of more than 2147483647 values are not supported."));
  return makeSparse(std::move(content));
}

Samples Samples::kernel(const Table<double>& values, KernelColumns columns) {
  return makeKernel(values.rows, values.columns, numbersOf(values), columns);
}

Samples Samples::kernel(const Table<float>& values, KernelColumns columns) {
  return makeKernel(values.rows, values.columns, numbersOf(values), columns);
}

Samples Samples::kernel(KernelRows values, KernelColumns columns) {
  if (!values.compute) throw AppException("Kernel rows need a function that computes them.");
  if (!values.diagonal.empty() && values.diagonal.size() != values.rows)
    throw AppException("The diagonal of kernel rows must have a value for each of them.");
  const std::size_t rows = values.rows;
  const std::size_t width = values.columns;
  return makeKernel(rows, width, std::move(values), columns);
}

std::size_t Samples::rows() const { return content->rows; }

std::size_t Samples::features() const { return content->features; }

namespace detail {

namespace {

template <typename Number>
std::unique_ptr<zelmag::AbstractMatrix<double>> denseMatrix(
    const Rows& rows, const zelmag::StridedNumbers<Number>& numbers) {
  if constexpr (std::is_same_v<Number, double>)
    if (numbers.columnStride == 1 && rows.features == rows.tableColumns &&
        numbers.rowStride == static_cast<std::ptrdiff_t>(rows.features))
      return zelmag::createMatrix(const_cast<double*>(numbers.first), nullptr, nullptr,
                                  rows.features, rows.rows);
  return std::make_unique<zelmag::TableMatrix<Number>>(numbers, rows.tableColumns, rows.features,
                                                       rows.rows);
}

}  // namespace

// Matrices take their arrays as they come and never write them.
std::unique_ptr<zelmag::AbstractMatrix<double>> matrixOf(const Rows& rows) {
  if (!rows.isSparse())
    return std::visit([&rows](const auto& numbers) { return denseMatrix(rows, numbers); },
                      rows.table);
  return zelmag::createMatrix(const_cast<double*>(rows.values.data()),
                              const_cast<int*>(rows.columns.data()),
                              const_cast<int*>(rows.offsets.data()), rows.features, rows.rows);
}

std::shared_ptr<const Rows> widened(const std::shared_ptr<const Rows>& rows,
                                    std::uint64_t features) {
  if (rows->features >= features) return rows;
  return std::make_shared<Rows>(Rows{.values = rows->values,
                                     .columns = rows->columns,
                                     .offsets = rows->offsets,
                                     .table = rows->table,
                                     .tableColumns = rows->tableColumns,
                                     .rows = rows->rows,
                                     .features = features});
}

}  // namespace detail
}  // namespace zelsvm
