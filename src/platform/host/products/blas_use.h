// The BLAS functions that products call.
#pragma once

#include <cblas.h>
#include <omp.h>

namespace zelsvm {

struct Blas {
  decltype(&cblas_dgemv) dgemv;
  decltype(&cblas_dgemm) dgemm;
};

// An OpenBLAS built for OpenMP takes as many threads as a parallel region would get, so while one
// of these lives on the calling thread that is one.
class SingleThread {
 public:
  SingleThread() { omp_set_num_threads(1); }
  ~SingleThread() { omp_set_num_threads(threads); }
  SingleThread(const SingleThread&) = delete;
  SingleThread& operator=(const SingleThread&) = delete;

 private:
  int threads = omp_get_max_threads();
};

// The calling thread's use of the BLAS: without threads of its own, and one of no more at a time
// than there is work memory for. Requires requireBlas().
class BlasUse {
 public:
  // Waits while all work memory is in use.
  BlasUse();
  ~BlasUse();
  BlasUse(const BlasUse&) = delete;
  BlasUse& operator=(const BlasUse&) = delete;

  const Blas* operator->() const;

 private:
  SingleThread single;
};

}  // namespace zelsvm
