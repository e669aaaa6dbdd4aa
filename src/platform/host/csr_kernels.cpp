#include "platform/host/csr_kernels.h"

namespace zel::inline ZEL_PLATFORM {

#define ZEL_DECLARE_CSR_KERNELS(isa)                                                            \
  namespace isa {                                                                               \
  void timesVector(const CsrRows& rows, double alpha, const double* x, double beta, double* y); \
  void timesPanel(const CsrRows& rows, double alpha, const double* panel, int columns,          \
                  double beta, double* C, std::int64_t ldc);                                    \
  }

ZEL_DECLARE_CSR_KERNELS(baseline)
#ifdef __x86_64__
ZEL_DECLARE_CSR_KERNELS(avx2)
ZEL_DECLARE_CSR_KERNELS(avx512)
#endif

CsrKernels csrKernels([[maybe_unused]] Isa isa) {
#ifdef __x86_64__
  if (isa == Isa::avx512) return {avx512::timesVector, avx512::timesPanel};
  if (isa == Isa::avx2) return {avx2::timesVector, avx2::timesPanel};
#endif
  return {baseline::timesVector, baseline::timesPanel};
}

}  // namespace zel::inline ZEL_PLATFORM
