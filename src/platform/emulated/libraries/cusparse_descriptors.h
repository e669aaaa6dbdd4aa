// What stands behind the sparse library's handles and descriptors.
#pragma once

#include <cusparse.h>

#include <cstdint>

struct cusparseContext {};

// The caller's compressed sparse rows, zero-based. Columns may stand in any order within a row; one
// that stands there twice counts twice.
struct cusparseSpMatDescr {
  std::int64_t rows;
  std::int64_t cols;
  std::int64_t nnz;
  const int* offsets;
  const int* indices;
  const double* values;
};

struct cusparseDnVecDescr {
  std::int64_t size;
  double* values;
};

// Column-major.
struct cusparseDnMatDescr {
  std::int64_t rows;
  std::int64_t cols;
  std::int64_t ld;
  double* values;
};

struct cusparseSpVecDescr {
  std::int64_t size;
  std::int64_t nnz;
  const int* indices;
  const double* values;
};
