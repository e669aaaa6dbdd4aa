#include "platform/cuda/machine/dense_samples.h"

#include <limits>

namespace zelsvm {

DenseSamples::DenseSamples(const zelmag::AbstractMatrix<double>& source,
                           zellas::BlasContext& context)
    : colCount(source.cols()),
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

std::uint64_t DenseSamples::rowsAtOnce() const { return std::numeric_limits<std::uint64_t>::max(); }

}  // namespace zelsvm
