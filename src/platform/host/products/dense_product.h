// Dense products on the processor's BLAS, split over our own threads.
#pragma once

#include <cstdint>

namespace zelsvm {

// C = A' op(B) + beta C, column-major, A k x m, op(B) k x n, C m x n. The leading dimensions are at
// least the rows of the arrays as stored. C overlaps neither A nor B,
// and no size is 0.
struct DenseProduct {
  bool transposeB;
  int m;
  int n;
  int k;
  const double* A;
  int lda;
  const double* B;
  int ldb;
  double beta;
  double* C;
  int ldc;
};

// A beta of 0 never reads C. The slices are fixed by the sizes alone: equal bits for any number of
// threads. Requires requireBlas().
void denseProduct(const DenseProduct& product);

}  // namespace zelsvm
