#include "zeldplus/zelsvm/engine/kernel_kernels.h"

#include "platform/host/parallel.h"
#include "platform/host/texture_view.h"
#include "zeldplus/zelsvm/engine/host/kernel_transform.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t grain = 4096;

}  // namespace

template <typename T, SVM_KERNEL K>
void findSmoNormKernel(T* v, unsigned long long n) {
  transformProducts<K>(publishedConstants(), v, nullptr, n, 0);
}

template <typename T, SVM_KERNEL K>
void findSmoMatrixKernel(T* m, unsigned long long ld, unsigned long long first,
                         unsigned long long ncols, unsigned long long nrows) {
  const T* const norms = zel::textureData<T>(zelsvm_tx_norm);
  const KernelConstants constants = publishedConstants();
  const double nanoseconds = transformNanoseconds<K> * static_cast<double>(ncols);
  zel::forEachChunk(nrows, grain, nanoseconds, [=](std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t c = 0; c < ncols; ++c)
      transformProducts<K>(constants, m + c * ld + begin, norms + begin, end - begin,
                           norms[first + c]);
  });
}

template void findSmoNormKernel<double, SVM_KERNEL_POLYNOMIAL>(double*, unsigned long long);
template void findSmoNormKernel<double, SVM_KERNEL_SIGMOID>(double*, unsigned long long);
template void findSmoMatrixKernel<double, SVM_KERNEL_POLYNOMIAL>(double*, unsigned long long,
                                                                 unsigned long long,
                                                                 unsigned long long,
                                                                 unsigned long long);
template void findSmoMatrixKernel<double, SVM_KERNEL_RADIAL>(double*, unsigned long long,
                                                             unsigned long long, unsigned long long,
                                                             unsigned long long);
template void findSmoMatrixKernel<double, SVM_KERNEL_SIGMOID>(double*, unsigned long long,
                                                              unsigned long long,
                                                              unsigned long long,
                                                              unsigned long long);

}  // namespace zelsvm::inline ZEL_PLATFORM
