// The samples of a solve column by column, for row products that touch only what both factors
// store.
#pragma once

#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"

namespace zelsvm {

// One stored value that takes part in a product.
struct SparseEntry {
  std::uint64_t column;
  double value;
};

// Compressed sparse columns of consecutive stretches of samples. A stretch's part of a result stays
// in the first-level cache unless there are too many columns for so many stretches.
class SparseColumns {
 public:
  // Throws std::bad_alloc when memory runs out.
  void assign(const zelmag::AbstractMatrix<double>& matrix);

  [[nodiscard]] std::uint64_t stretch() const { return stretchRows; }
  // out[i - begin], i = begin … begin + stretch - 1 within the matrix, is the dot product of sample
  // i with the row whose entries are given, summed in their order. begin is a multiple of stretch.
  void multiply(const std::vector<SparseEntry>& row, std::uint64_t begin, double* out) const;
  // Stored values that a product with this row meets.
  [[nodiscard]] double work(const std::vector<SparseEntry>& row) const;

 private:
  [[nodiscard]] std::uint64_t cell(std::uint64_t row, std::uint64_t column) const {
    return row / stretchRows * cols + column;
  }

  std::uint64_t rows = 0;
  std::uint64_t cols = 0;
  std::uint64_t stretchRows = 1;
  HostVector<double> values;
  HostVector<unsigned> positions;  // of a value's sample within its stretch
  HostVector<unsigned> starts;     // by stretch and column
  std::vector<unsigned> columnCounts;
};

}  // namespace zelsvm
