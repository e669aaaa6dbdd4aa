#include "zeldplus/zelsvm/model/decision_functions.h"

#include <algorithm>

#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/zelsvm/model/decision_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned blockThreads = 128;
constexpr std::uint64_t maxParts = 1024;

// Partial sums per sample.
unsigned partsFor(std::uint64_t svCount) {
  return static_cast<unsigned>(std::min((svCount + blockThreads - 1) / blockThreads, maxParts));
}

template <typename T>
auto* kernelOf(SVM_KERNEL kernel) {
  switch (kernel) {
    case SVM_KERNEL_POLYNOMIAL:
      return decisionValueKernel<T, SVM_KERNEL_POLYNOMIAL>;
    case SVM_KERNEL_RADIAL:
      return decisionValueKernel<T, SVM_KERNEL_RADIAL>;
    case SVM_KERNEL_SIGMOID:
      return decisionValueKernel<T, SVM_KERNEL_SIGMOID>;
    case SVM_KERNEL_LINEAR:
    case SVM_KERNEL_UNSUPPORTED:
      break;
  }
  return decisionValueKernel<T, SVM_KERNEL_LINEAR>;
}

}  // namespace

template <typename T>
DecisionFunctions<T>::DecisionFunctions(const SvmContext<T>& params, const GenericModel<T>& model)
    : params(&params),
      model(&model),
      svCount(model.vectors().rows()),
      functionCount(model.rho().size()),
      svNorms(model.vectors().rowNorms()),
      coefficients(svCount) {}

template <typename T>
std::uint64_t DecisionFunctions<T>::bytesPerSample() const {
  return partsFor(svCount) * sizeof(T);
}

template <typename T>
void DecisionFunctions<T>::evaluate(zel::DeviceVector<T>& values, zel::DeviceVector<T>& products,
                                    std::uint64_t pitch, const zel::DeviceVector<T>& testNorms,
                                    std::uint64_t samples) {
  const unsigned parts = partsFor(svCount);
  const auto rows = static_cast<unsigned>(samples);
  partials.resize(parts * samples);
  std::uint64_t f = 0;
  const auto run = [&](const HostVector<T>& functionCoefficients) {
    coefficients.copyFrom(functionCoefficients, 0, 0, svCount);
    zel::launch(kernelOf<T>(params->kernelType), {dim3{parts, rows}, blockThreads}, partials.data(),
                testNorms.data(), coefficients.data(), svNorms.data(), svCount, products.data(),
                pitch);
    zel::launch(decisionReductionKernel<T>, {rows, blockThreads}, values.data() + f * samples,
                partials.data(), model->rho()[f], parts);
    ++f;
  };
  if (params->problemKind == ProblemKind::regression) return run(model->coefficients());
  const std::uint64_t k = model->labels().size();
  HostVector<T> functionCoefficients(svCount);
  for (std::uint64_t a = 0; a < k; ++a)
    for (std::uint64_t b = a + 1; b < k; ++b) {
      model->pairCoefficients(functionCoefficients, a, b);
      run(functionCoefficients);
    }
}

template class DecisionFunctions<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
