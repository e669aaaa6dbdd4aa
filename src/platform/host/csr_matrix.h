// A sparse matrix as the host keeps it: the caller's arrays and what an inspection found in them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace zel::inline ZEL_PLATFORM {

// The caller's compressed sparse rows, zero-based. Columns may stand in any order within a row;
// one that stands there twice counts twice.
struct CsrArrays {
  std::int64_t rows;
  std::int64_t cols;
  std::int64_t nnz;
  const int* offsets;
  const int* indices;
  const double* values;
};

// Looks at the arrays once, when it is made; they must stay as they are while it lives.
class CsrMatrix {
 public:
  // None where the offsets do not ascend from 0 to nnz or a column is out of range. Throws
  // std::bad_alloc.
  static std::optional<CsrMatrix> inspect(const CsrArrays& arrays);

  [[nodiscard]] const CsrArrays& arrays() const { return stored; }

  // First rows of pieces of about equal work, and the row count at the end. Fixed by the matrix.
  [[nodiscard]] const std::vector<std::int64_t>& pieces() const { return firstRows; }

  // All elements, row after row, for a matrix that is full or nearly so; else null. Where elements
  // are absent they stand here as 0, which only a finite factor leaves without effect.
  [[nodiscard]] const double* dense() const {
    return inOrder ? stored.values : (copy.empty() ? nullptr : copy.data());
  }
  // False where every element is known to be stored.
  [[nodiscard]] bool hasAbsent() const { return absent; }

 private:
  explicit CsrMatrix(const CsrArrays& arrays) : stored(arrays) {}
  void divide();
  void copyDense();

  CsrArrays stored;
  std::vector<std::int64_t> firstRows;
  std::vector<double> copy;
  bool inOrder = false;  // every row holds all columns from first to last: dense as it is
  bool absent = true;
};

}  // namespace zel::inline ZEL_PLATFORM
