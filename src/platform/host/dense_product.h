// Dense products on the processor's BLAS, split over our own threads.
#pragma once

#include <cstdint>

namespace zel::inline ZEL_PLATFORM {

// C = alpha op(A) op(B) + beta C, column-major, op(A) m x k, op(B) k x n, C m x n. The leading
// dimensions are at least the rows of the arrays as stored. C overlaps neither A nor B.
struct DenseProduct {
  bool transposeA;
  bool transposeB;
  int m;
  int n;
  int k;
  double alpha;
  const double* A;
  int lda;
  const double* B;
  int ldb;
  double beta;
  double* C;
  int ldc;
};

// A beta of 0 never reads C. The slices are fixed by the sizes alone: equal bits for any number of
// threads. Requires prepareBlas().
void denseProduct(const DenseProduct& product);

}  // namespace zel::inline ZEL_PLATFORM
