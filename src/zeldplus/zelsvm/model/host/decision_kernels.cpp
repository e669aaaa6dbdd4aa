#include "zeldplus/zelsvm/model/decision_kernels.h"

#include <algorithm>

#include "platform/host/parallel.h"
#include "zeldplus/zelsvm/engine/host/kernel_transform.h"

namespace zelsvm::inline ZEL_PLATFORM {

// A sample's whole sum goes to its first part, in stretches that stay in the first-level cache.
template <typename T, SVM_KERNEL K>
void decisionValueKernel(T* partial, const T* testNorms, const T* coefficients, const T* svNorms,
                         unsigned long long svCount, T* products, unsigned long long ld) {
  constexpr std::uint64_t stretch = 1024;
  const std::uint64_t parts = gridDim.x;
  const double nanoseconds = (transformNanoseconds<K> + 0.3) * static_cast<double>(svCount);
  zel::forEachChunk(gridDim.y, 1, nanoseconds, [=](std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t y = begin; y < end; ++y) {
      T* const column = products + y * ld;
      T sum = 0;
      for (std::uint64_t k = 0; k < svCount; k += stretch) {
        const std::uint64_t n = std::min<std::uint64_t>(stretch, svCount - k);
        transformProducts<K>(column + k, svNorms + k, n, testNorms[y]);
        sum += transformSweeps().dot(column + k, coefficients + k, n);
      }
      std::fill_n(partial + y * parts, parts, T{0});
      partial[y * parts] = sum;
    }
  });
}

template <typename T>
void decisionReductionKernel(T* out, const T* partial, T rho, unsigned long long count) {
  for (std::uint64_t b = 0; b < gridDim.x; ++b) {
    T sum = 0;
    for (std::uint64_t t = 0; t < count; ++t) sum += partial[b * count + t];
    out[b] = sum - rho;
  }
}

template void decisionValueKernel<double, SVM_KERNEL_LINEAR>(double*, const double*, const double*,
                                                             const double*, unsigned long long,
                                                             double*, unsigned long long);
template void decisionValueKernel<double, SVM_KERNEL_POLYNOMIAL>(double*, const double*,
                                                                 const double*, const double*,
                                                                 unsigned long long, double*,
                                                                 unsigned long long);
template void decisionValueKernel<double, SVM_KERNEL_RADIAL>(double*, const double*, const double*,
                                                             const double*, unsigned long long,
                                                             double*, unsigned long long);
template void decisionValueKernel<double, SVM_KERNEL_SIGMOID>(double*, const double*, const double*,
                                                              const double*, unsigned long long,
                                                              double*, unsigned long long);
template void decisionReductionKernel(double*, const double*, double, unsigned long long);

}  // namespace zelsvm::inline ZEL_PLATFORM
