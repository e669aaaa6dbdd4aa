#include "platform/host/rows/sparse_columns.h"

#include <algorithm>
#include <numeric>

namespace zelsvm {
namespace {

constexpr std::uint64_t leastStretch = 2048;

// Stretches of at least as many values as there are columns.
std::uint64_t stretchFor(std::uint64_t rows, std::uint64_t cols, std::uint64_t values) {
  const std::uint64_t stretches =
      std::max<std::uint64_t>(1, values / std::max<std::uint64_t>(1, cols));
  return std::max(leastStretch, (rows + stretches - 1) / stretches);
}

}  // namespace

void SparseColumns::assign(const zelmag::AbstractMatrix<double>& matrix) {
  rows = matrix.rows();
  cols = matrix.cols();
  stretchRows = stretchFor(rows, cols, matrix.valueCount());
  const std::uint64_t cells = (rows + stretchRows - 1) / stretchRows * cols;
  values.resize(matrix.valueCount());
  positions.resize(matrix.valueCount());
  starts.resize(cells + 1);
  columnCounts.assign(cols, 0);
  unsigned* const next = starts.data();
  std::fill_n(next, cells + 1, 0u);
  const int* const offsets = matrix.rowOffsets();
  const int* const columns = matrix.columnIndices();
  const auto forEachValue = [&](const auto& visit) {
    for (std::uint64_t i = 0; i < rows; ++i)
      for (int p = offsets[i]; p < offsets[i + 1]; ++p)
        visit(i, static_cast<std::uint64_t>(columns[p]), matrix.values()[p]);
  };
  forEachValue([&](std::uint64_t i, std::uint64_t j, double) {
    ++next[cell(i, j) + 1];
    ++columnCounts[j];
  });
  std::partial_sum(next, next + cells + 1, next);
  forEachValue([&](std::uint64_t i, std::uint64_t j, double value) {
    const unsigned place = next[cell(i, j)]++;
    values.data()[place] = value;
    positions.data()[place] = static_cast<unsigned>(i % stretchRows);
  });
  // Each cell's start has moved to its end, which is the next one's start.
  std::copy_backward(next, next + cells, next + cells + 1);
  next[0] = 0;
}

void SparseColumns::multiply(const std::vector<SparseEntry>& row, std::uint64_t begin,
                             double* out) const {
  std::fill_n(out, std::min(stretchRows, rows - begin), 0.0);
  for (const auto& [column, value] : row) {
    const std::uint64_t c = cell(begin, column);
    for (unsigned p = starts.data()[c]; p < starts.data()[c + 1]; ++p)
      out[positions.data()[p]] += value * values.data()[p];
  }
}

double SparseColumns::work(const std::vector<SparseEntry>& row) const {
  double sum = 0;
  for (const SparseEntry& entry : row) sum += columnCounts[entry.column];
  return sum;
}

}  // namespace zelsvm
