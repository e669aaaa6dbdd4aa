#include "platform/cuda/machine/dense_samples.h"

#include <limits>

#include "platform/cuda/kernels/sample_kernels.h"
#include "platform/cuda/runtime/launch.h"

namespace zelsvm {
namespace {

constexpr unsigned sweepBlock = 128;

}  // namespace

DenseSamples::DenseSamples(const zelmag::AbstractMatrix<double>& source,
                           zellas::BlasContext& context)
    : colCount(source.cols()),
      context(&context),
      gatherLimit(zel::gridLimit(gatherRowsKernel, sweepBlock)),
      matrix(context, values.load(source, 0, source.rows()), source.cols(), source.rows(),
             source.cols()) {}

void DenseSamples::rowProducts(double* result, std::uint64_t sample) {
  matrix.gemv(CUBLAS_OP_T, 1, matrix.sample(sample), 0, result);
}

void DenseSamples::blockProducts(double* block, std::uint64_t blockStride, double* result,
                                 std::uint64_t resultStride, std::uint64_t count) {
  matrix.gemm(CUBLAS_OP_T, CUBLAS_OP_N, count, 1, block, blockStride, 0, result, resultStride);
}

double* DenseSamples::rows(std::uint64_t first, std::uint64_t /*count*/) {
  return matrix.sample(first);
}

double* DenseSamples::rowsOf(const unsigned* numbers, std::uint64_t count) {
  gathered.resize(colCount * count);
  zel::launch(gatherRowsKernel,
              {zel::gridSize(gatherLimit, colCount * count, sweepBlock), sweepBlock},
              gathered.data(), matrix.sample(0), numbers, colCount, count);
  return gathered.data();
}

void DenseSamples::productsWithin(std::span<const unsigned> numbers, double* result,
                                  std::uint64_t resultStride) {
  chosen.assign(numbers);
  double* const rows = rowsOf(chosen.data(), numbers.size());
  zellas::DenseMatrix<double>(*context, rows, colCount, numbers.size(), colCount)
      .gemm(CUBLAS_OP_T, CUBLAS_OP_N, numbers.size(), 1, rows, colCount, 0, result, resultStride);
}

std::uint64_t DenseSamples::rowsAtOnce() const { return std::numeric_limits<std::uint64_t>::max(); }

}  // namespace zelsvm
