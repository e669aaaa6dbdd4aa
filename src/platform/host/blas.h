// The processor's BLAS, loaded when the first product needs it.
#pragma once

#include <cblas.h>
#include <omp.h>

namespace zel::inline ZEL_PLATFORM {

struct Blas {
  decltype(&cblas_dgemv) dgemv;
  decltype(&cblas_dgemm) dgemm;
};

// An OpenBLAS that shares our threading runtime takes as many threads as a parallel region would
// get, so while one of these lives on the calling thread that is one.
class SingleThread {
 public:
  SingleThread() { omp_set_num_threads(1); }
  ~SingleThread() { omp_set_num_threads(threads); }
  SingleThread(const SingleThread&) = delete;
  SingleThread& operator=(const SingleThread&) = delete;

 private:
  int threads = omp_get_max_threads();
};

// Must have returned true before a product is computed. Loads the BLAS at the first call, with work
// memory for every thread; any thread may call. False when that memory is not there; throws
// std::runtime_error when the library cannot be loaded.
bool prepareBlas();

// Requires prepareBlas().
const Blas& blas();

}  // namespace zel::inline ZEL_PLATFORM
