// Dot products of all rows of a matrix with blocks of dense rows.
#pragma once

#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"

namespace zelsvm {

// Blocks of a matrix's rows, densely. The matrix must outlive it.
class DenseRows {
 public:
  explicit DenseRows(const zelmag::AbstractMatrix<double>& matrix) : matrix(&matrix) {}

  // Rows first … first + count - 1, cols elements each; valid until the next call. Throws
  // std::bad_alloc.
  const double* rows(std::uint64_t first, std::uint64_t count);

 private:
  const zelmag::AbstractMatrix<double>* matrix;
  HostVector<double> laidOut;
};

// What repeats in a row counts twice. A sparse matrix that is nearly full is copied and multiplied
// as a dense one, unless there is an infinity or a NaN that its absent elements would meet.
class BlockProducts {
 public:
  // The matrix must outlive it. Throws std::bad_alloc.
  explicit BlockProducts(const zelmag::AbstractMatrix<double>& matrix);

  // result[i + k * resultStride] = dot(row i, block row k) for k < count. Rows of the block are
  // blockStride elements apart and at least as long as those of the matrix; what lies beyond does
  // not take part. Equal bits for any number of threads. Throws std::bad_alloc, and
  // RuntimeException for sizes that the linear algebra library does not take.
  void multiply(const double* block, std::uint64_t blockStride, double* result,
                std::uint64_t resultStride, std::uint64_t count);

 private:
  struct Block {
    const double* rows;
    std::uint64_t stride;
    double* result;
    std::uint64_t resultStride;
    std::uint64_t count;
  };

  void divide();
  void copyDense();
  [[nodiscard]] bool denseServes(const Block& block) const;
  void multiplyDense(const Block& block) const;
  void multiplyPanels(const Block& block);
  void packPanels(const Block& block, std::uint64_t first, std::uint64_t panels);
  template <typename Body>
  void forEachPiece(double nanoseconds, const Body& body) const;

  const zelmag::AbstractMatrix<double>* matrix;
  const double* dense = nullptr;  // all elements, row after row
  bool hasAbsent = false;         // not all of these are stored
  HostVector<double> copy;
  // Of a sparse matrix: first rows of pieces of about equal work, and the row count at the end.
  std::vector<std::uint64_t> firstRows;
  HostVector<double> packed;
};

}  // namespace zelsvm
