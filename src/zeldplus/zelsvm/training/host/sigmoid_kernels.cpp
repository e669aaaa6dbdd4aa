#include "zeldplus/zelsvm/training/sigmoid_kernels.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/host/parallel.h"
#include "platform/host/texture_view.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/training/host/sigmoid_sweeps.h"
#include "zeldplus/zelsvm/training/sigmoid_rules.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// Cut the same way for any number of threads.
constexpr std::uint64_t maxChunks = 64;
constexpr double nanosecondsPerSample = 5;

// The chunks' sums in order; sweep(decision values, targets, count) gives one chunk's.
template <typename Sum, typename Sweep, typename Use>
void sumChunks(std::uint64_t n, const Sweep& sweep, const Use& use) {
  const auto* const d = zel::textureData<double>(zelsvm_tx_sigx[0]);
  const auto* const t = zel::textureData<double>(zelsvm_tx_sigx[1]);
  const std::uint64_t chunk = std::max<std::uint64_t>(4096, (n + maxChunks - 1) / maxChunks);
  std::array<Sum, maxChunks> sums{};
  zel::forEachChunk(n, chunk, nanosecondsPerSample, [&](std::uint64_t begin, std::uint64_t end) {
    sums[begin / chunk] = sweep(d + begin, t + begin, end - begin);
  });
  for (const Sum& sum : sums) use(sum);
}

}  // namespace

template <typename T>
void findSigmoidFunctionalKernel(T* out, T A, T B, unsigned n) {
  out[0] = 0;
  sumChunks<T>(
      n,
      [=](const double* d, const double* t, std::uint64_t count) {
        return sigmoidSweeps().functional(d, t, count, A, B);
      },
      [=](T sum) { out[0] += sum; });
}

template <typename T>
void findSigmoidHessianKernel(SigmoidHessian<T>* out, T A, T B, unsigned n) {
  out[0] = {};
  sumChunks<SigmoidHessian<T>>(
      n,
      [=](const double* d, const double* t, std::uint64_t count) {
        return sigmoidSweeps().hessian(d, t, count, A, B);
      },
      [=](const SigmoidHessian<T>& sum) { addDerivatives(out[0], sum); });
}

template void findSigmoidFunctionalKernel(double*, double, double, unsigned);
template void findSigmoidHessianKernel(SigmoidHessian<double>*, double, double, unsigned);

}  // namespace zelsvm::inline ZEL_PLATFORM
