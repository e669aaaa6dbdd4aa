#include "platform/host/products/dense_product.h"

#include <algorithm>

#include "platform/host/products/blas_use.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// A slice of a matrix-vector product reads about this many elements: 96 KiB.
constexpr int sliceElements = 12288;
constexpr double nanosecondsPerElement = 0.2;
// A tile of a matrix product does about this many multiplications.
constexpr double tileMultiplications = 3e6;
constexpr double nanosecondsPerMultiplication = 0.06;

constexpr int roundUp(int value, int multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

// Start of a stored column where those are contiguous lines, else of a stored row.
const double* line(const double* matrix, int leading, bool contiguous, std::uint64_t i) {
  return matrix + (contiguous ? i * static_cast<std::uint64_t>(leading) : i);
}

// Not every BLAS leaves NaN behind in an output it multiplies by 0, so that is done here.
void scale(double* elements, std::uint64_t count, double beta) {
  if (beta == 0) {
    std::fill_n(elements, count, 0.0);
  } else if (beta != 1) {
    for (std::uint64_t i = 0; i < count; ++i) elements[i] *= beta;
  }
}

void multiplyVector(const DenseProduct& p) {
  const int grain = std::max(8, roundUp(std::min(sliceElements / p.k, p.m), 8));
  zel::forEachChunk(static_cast<std::uint64_t>(p.m), static_cast<std::uint64_t>(grain),
                    nanosecondsPerElement * p.k, [&p](std::uint64_t begin, std::uint64_t end) {
                      const int count = static_cast<int>(end - begin);
                      scale(p.C + begin, end - begin, p.beta);
                      const BlasUse blas;
                      const double* const A = line(p.A, p.lda, true, begin);
                      blas->dgemv(CblasColMajor, CblasTrans, p.k, count, 1.0, A, p.lda, p.B, 1, 1.0,
                                  p.C + begin, 1);
                    });
}

void multiplyTile(const DenseProduct& p, std::uint64_t row, int rows, std::uint64_t column,
                  int columns) {
  double* const C = p.C + row + column * static_cast<std::uint64_t>(p.ldc);
  for (int j = 0; j < columns; ++j)
    scale(C + static_cast<std::uint64_t>(j) * static_cast<std::uint64_t>(p.ldc),
          static_cast<std::uint64_t>(rows), p.beta);
  const BlasUse blas;
  blas->dgemm(CblasColMajor, CblasTrans, p.transposeB ? CblasTrans : CblasNoTrans, rows, columns,
              p.k, 1.0, line(p.A, p.lda, true, row), p.lda, line(p.B, p.ldb, !p.transposeB, column),
              p.ldb, 1.0, C, p.ldc);
}

void multiplyMatrix(const DenseProduct& p) {
  const int tileColumns = std::min(p.n, p.m < 512 ? 64 : 256);
  const double wanted = tileMultiplications / tileColumns / p.k;
  const int tileRows = std::max(128, roundUp(static_cast<int>(std::min<double>(wanted, p.m)), 16));
  const auto across = static_cast<std::uint64_t>((p.n - 1) / tileColumns + 1);
  const auto down = static_cast<std::uint64_t>((p.m - 1) / tileRows + 1);
  const double perTile = nanosecondsPerMultiplication * std::min(tileRows, p.m) * tileColumns * p.k;
  zel::forEachChunk(across * down, 1, perTile, [&](std::uint64_t tile, std::uint64_t) {
    const std::uint64_t row = tile % down * static_cast<std::uint64_t>(tileRows);
    const std::uint64_t column = tile / down * static_cast<std::uint64_t>(tileColumns);
    multiplyTile(p, row, std::min(tileRows, p.m - static_cast<int>(row)), column,
                 std::min(tileColumns, p.n - static_cast<int>(column)));
  });
}

}  // namespace

void denseProduct(const DenseProduct& product) {
  const bool vector = product.n == 1 && !product.transposeB;
  vector ? multiplyVector(product) : multiplyMatrix(product);
}

}  // namespace zelsvm
