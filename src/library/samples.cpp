#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include "library/rows.h"

namespace zelsvm {
namespace {

using detail::Rows;

constexpr std::size_t indexLimit = std::numeric_limits<int>::max();

// Throws AppException when a column lies outside or stands twice.
void requireColumns(const Rows& content, std::uint64_t row) {
  const auto begin = static_cast<std::size_t>(content.offsets[row]);
  const auto end = static_cast<std::size_t>(content.offsets[row + 1]);
  const auto columns = content.columns.subspan(begin, end - begin);
  for (const int column : columns)
    if (column < 0 || static_cast<std::uint64_t>(column) >= content.features)
      throw AppException("A column of the sparse rows lies outside of the features.");
  if (std::adjacent_find(columns.begin(), columns.end(), std::greater_equal<>()) == columns.end())
    return;
  std::vector<int> sorted(columns.begin(), columns.end());
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
    throw AppException("A column stands twice in a sparse row.");
}

Samples makeDense(std::shared_ptr<Rows> content) {
  if (content->features == 0 || content->values.empty() ||
      content->values.size() % content->features != 0)
    throw AppException("Dense samples must be whole rows of features, at least one.");
  content->rows = content->values.size() / content->features;
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
  return makeDense(std::make_shared<Rows>(Rows{.values = values, .features = features}));
}

Samples Samples::dense(std::vector<double>&& values, std::size_t features) {
  auto content = std::make_shared<Rows>(Rows{.values = {}, .features = features});
  content->ownedValues = std::move(values);
  content->values = content->ownedValues;
  return makeDense(std::move(content));
}

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

std::size_t Samples::rows() const { return content->rows; }

std::size_t Samples::features() const { return content->features; }

namespace detail {

std::unique_ptr<zelmag::AbstractMatrix<double>> matrixOf(const Rows& rows) {
  // Matrices take their arrays as they come and never write them.
  return zelmag::createMatrix(
      const_cast<double*>(rows.values.data()), const_cast<int*>(rows.columns.data()),
      rows.isSparse() ? const_cast<int*>(rows.offsets.data()) : nullptr, rows.features, rows.rows);
}

std::shared_ptr<const Rows> widened(const std::shared_ptr<const Rows>& rows,
                                    std::uint64_t features) {
  if (rows->features >= features) return rows;
  const std::uint64_t before = rows->features;
  auto wide = std::make_shared<Rows>(Rows{.values = rows->values,
                                          .columns = rows->columns,
                                          .offsets = rows->offsets,
                                          .rows = rows->rows,
                                          .features = features});
  if (rows->isSparse()) return wide;
  wide->ownedValues.assign(rows->rows * features, 0);
  for (std::uint64_t i = 0; i < rows->rows; ++i)
    std::copy_n(rows->values.begin() + static_cast<std::ptrdiff_t>(i * before), before,
                wide->ownedValues.begin() + static_cast<std::ptrdiff_t>(i * features));
  wide->values = wide->ownedValues;
  return wide;
}

}  // namespace detail
}  // namespace zelsvm
