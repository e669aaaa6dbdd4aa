// Products of a sparse matrix with dense columns.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/host/csr_matrix.h"

namespace zel::inline ZEL_PLATFORM {

// Column-major, element (i, j) at elements[i + j * leading].
template <typename T>
struct Columns {
  T* elements;
  std::int64_t leading;
  std::int64_t count;
};

// Bytes of 64-byte aligned work memory that csrProduct needs for so many columns.
std::size_t csrProductBuffer(const CsrMatrix& A, std::int64_t columns);

// C = alpha A B + beta C; a beta of 0 never reads C. Equal bits for any number of threads. Requires
// prepareBlas() where A has a dense form.
void csrProduct(const CsrMatrix& A, double alpha, const Columns<const double>& B, double beta,
                const Columns<double>& C, double* buffer);

}  // namespace zel::inline ZEL_PLATFORM
