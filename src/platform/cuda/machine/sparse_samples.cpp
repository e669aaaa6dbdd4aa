#include "platform/cuda/machine/sparse_samples.h"

#include <algorithm>

#include "data/scaled_sparse_rows.h"
#include "platform/cuda/kernels/sample_kernels.h"
#include "platform/cuda/runtime/launch.h"

namespace zelsvm {
namespace {

constexpr std::uint64_t laidOutBytes = std::uint64_t{64} << 20;

}  // namespace

// A scatter has no order and a product adds up, so neither may meet a column twice in a row.
struct AscendingRows {
  explicit AscendingRows(const zelmag::AbstractMatrix<double>& matrix) {
    values.reserve(matrix.valueCount());
    columns.reserve(matrix.valueCount());
    offsets.reserve(matrix.rows() + 1);
    for (std::uint64_t i = 0; i < matrix.rows(); ++i) add(matrix, i);
  }
  AscendingRows(const zelmag::AbstractMatrix<double>& matrix, std::span<const unsigned> numbers) {
    for (const unsigned i : numbers) add(matrix, i);
  }

  void add(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t i) {
    const int* const bounds = matrix.rowOffsets() + i;
    const std::uint64_t count =
        row.assign(matrix.columnIndices(), matrix.values(), static_cast<std::uint64_t>(bounds[0]),
                   static_cast<std::uint64_t>(bounds[1]));
    values.insert(values.end(), row.values, row.values + count);
    columns.insert(columns.end(), row.columns, row.columns + count);
    offsets.push_back(static_cast<int>(values.size()));
  }

  zelmag::AscendingRow<double> row;

  std::vector<double> values;
  std::vector<int> columns;
  std::vector<int> offsets{0};
};

SparseSamples::SparseSamples(const zelmag::AbstractMatrix<double>& source,
                             zellas::SparseContext<double>& context)
    : SparseSamples(source, AscendingRows(source), context) {}

SparseSamples::SparseSamples(const zelmag::AbstractMatrix<double>& source,
                             const AscendingRows& rows, zellas::SparseContext<double>& context)
    : source(&source),
      context(&context),
      offsets(rows.offsets),
      values(std::span(rows.values)),
      columnIndices(std::span(rows.columns)),
      rowOffsets(std::span(rows.offsets)),
      matrix(context, values, columnIndices, rowOffsets, source.rows(), source.cols()) {}

void SparseSamples::rowProducts(double* result, std::uint64_t sample) {
  const auto begin = static_cast<std::uint64_t>(offsets[sample]);
  const std::uint64_t count = static_cast<std::uint64_t>(offsets[sample + 1]) - begin;
  scattered.resize(source->cols());
  scattered.clear();
  if (count != 0) matrix.scatterRow(scattered.data(), begin, count);
  matrix.mv(1, scattered.data(), 0, result);
}

void SparseSamples::blockProducts(double* block, std::uint64_t blockStride, double* result,
                                  std::uint64_t resultStride, std::uint64_t count) {
  matrix.mm(CUSPARSE_OPERATION_NON_TRANSPOSE, CUSPARSE_OPERATION_NON_TRANSPOSE, count, 1, block,
            blockStride, 0, result, resultStride);
}

double* SparseSamples::rows(std::uint64_t first, std::uint64_t count) {
  return layOut(nullptr, first, count);
}

double* SparseSamples::rowsOf(const unsigned* numbers, std::uint64_t count) {
  return layOut(numbers, 0, count);
}

double* SparseSamples::layOut(const unsigned* numbers, std::uint64_t first, std::uint64_t count) {
  block.resize(count * source->cols());
  block.clear();
  zel::launch(scatterRowsKernel, {static_cast<unsigned>(count), 128}, block.data(), values.data(),
              columnIndices.data(), rowOffsets.data(), numbers, static_cast<unsigned>(first),
              source->cols());
  return block.data();
}

void SparseSamples::productsWithin(std::span<const unsigned> numbers, double* result,
                                   std::uint64_t resultStride) {
  const AscendingRows rows(*source, numbers);
  chosen.assign(numbers);
  chosenValues.assign(rows.values);
  chosenColumns.assign(rows.columns);
  chosenOffsets.assign(rows.offsets);
  zellas::SparseMatrix<double> among(*context, chosenValues, chosenColumns, chosenOffsets,
                                     numbers.size(), source->cols());
  std::uint64_t part = 0;
  for (std::uint64_t first = 0; first < numbers.size(); first += part) {
    part = std::min<std::uint64_t>(rowsAtOnce(), numbers.size() - first);
    among.mm(CUSPARSE_OPERATION_NON_TRANSPOSE, CUSPARSE_OPERATION_NON_TRANSPOSE, part, 1,
             rowsOf(chosen.data() + first, part), source->cols(), 0, result + first * resultStride,
             resultStride);
  }
}

std::uint64_t SparseSamples::rowsAtOnce() const {
  return std::max<std::uint64_t>(1, laidOutBytes / DenseRows::rowBytes(*source));
}

}  // namespace zelsvm
