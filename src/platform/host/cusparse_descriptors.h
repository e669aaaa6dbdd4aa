// What stands behind the sparse library's handles and descriptors.
#pragma once

#include <cusparse.h>

#include <cstdint>

#include "platform/host/csr_matrix.h"

struct cusparseContext {};

struct cusparseSpMatDescr {
  zel::CsrMatrix matrix;
};

struct cusparseDnVecDescr {
  std::int64_t size;
  double* values;
};

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
