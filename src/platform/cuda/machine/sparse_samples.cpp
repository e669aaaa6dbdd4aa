#include "platform/cuda/machine/sparse_samples.h"

#include <algorithm>
#include <functional>

namespace zelsvm {
namespace {

constexpr std::uint64_t laidOutBytes = std::uint64_t{16} << 20;

bool ascends(const int* columns, std::uint64_t count) {
  return std::adjacent_find(columns, columns + count, std::greater_equal<>()) == columns + count;
}

}  // namespace

SparseSamples::SparseSamples(const zelmag::AbstractMatrix<double>& source,
                             zellas::SparseContext<double>& context)
    : source(&source),
      values(std::span(source.values(), source.valueCount())),
      columnIndices(std::span(source.columnIndices(), source.valueCount())),
      rowOffsets(std::span(source.rowOffsets(), source.rows() + 1)),
      matrix(context, values, columnIndices, rowOffsets, source.rows(), source.cols()) {}

bool SparseSamples::isFullRow(const int* columns, std::uint64_t count) const {
  return count == source->cols() && ascends(columns, count);
}

// A scatter has no order, so it cannot say which of two entries of a column stays. Rows that may
// repeat columns are laid out by the host.
double* SparseSamples::denseRow(std::uint64_t sample) {
  const auto begin = static_cast<std::uint64_t>(source->rowOffsets()[sample]);
  const std::uint64_t count = static_cast<std::uint64_t>(source->rowOffsets()[sample + 1]) - begin;
  const int* const columns = source->columnIndices() + begin;
  if (isFullRow(columns, count)) return values.data() + begin;
  if (!ascends(columns, count)) return block.load(*source, sample, 1);
  scattered.resize(source->cols());
  scattered.clear();
  if (count != 0) matrix.scatterRow(scattered.data(), begin, count);
  return scattered.data();
}

void SparseSamples::rowProducts(double* result, std::uint64_t sample) {
  matrix.mv(1, denseRow(sample), 0, result);
}

void SparseSamples::blockProducts(double* block, std::uint64_t blockStride, double* result,
                                  std::uint64_t resultStride, std::uint64_t count) {
  matrix.mm(CUSPARSE_OPERATION_NON_TRANSPOSE, CUSPARSE_OPERATION_NON_TRANSPOSE, count, 1, block,
            blockStride, 0, result, resultStride);
}

double* SparseSamples::rows(std::uint64_t first, std::uint64_t count) {
  return block.load(*source, first, count);
}

std::uint64_t SparseSamples::rowsAtOnce() const {
  return std::max<std::uint64_t>(1, laidOutBytes / DenseRows::rowBytes(*source));
}

}  // namespace zelsvm
