#include "zeldplus/zelsvm/model/rspredictor.h"

#include <algorithm>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/model/decision_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned blockThreads = 128;
constexpr std::uint64_t maxParts = 1024;
constexpr std::uint64_t minBlockSize = 4;
constexpr std::uint64_t maxBlockSize = 256;

}  // namespace

template <typename T>
GenericPredictor<T>::GenericPredictor(const SvmContext<T>& params, const GenericModel<T>& model)
    : params(&params),
      model(&model),
      vectors(&model.vectors()),
      svCount(vectors->rows()),
      pitch(zel::roundedCapacity(svCount)),
      coefficients(svCount),
      svNorms(vectors->rowNorms()) {
  static_cast<void>(model.rho());
  publishConstants();
}

template <typename T>
void GenericPredictor<T>::publishConstants() const {
  const T gamma = params->effectiveGamma(vectors->cols());
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_gamma, &gamma, sizeof gamma));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_coef0, &params->coef0, sizeof params->coef0));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_degree, &params->degree, sizeof params->degree));
}

template <typename T>
void GenericPredictor<T>::size(const zelmag::AbstractMatrix<T>& test) {
  parts = static_cast<unsigned>(std::min((svCount + blockThreads - 1) / blockThreads, maxParts));
  const std::uint64_t available = zel::freeDeviceMemory() / 2;
  const std::uint64_t bytesPerSample = (pitch + parts) * sizeof(T) + 16;
  const auto fitting = static_cast<std::uint32_t>(available / bytesPerSample + 3) & ~3u;
  blockSize = std::clamp<std::uint64_t>(fitting, minBlockSize, maxBlockSize);
  // Sparse rows are laid out densely on the device, which many columns make large.
  if (test.rowOffsets() != nullptr)
    blockSize = std::clamp(available / 4 / (test.cols() * sizeof(T)), minBlockSize, blockSize);
  const std::uint64_t m = std::min(test.rows(), blockSize);
  partials.resize(m * parts);
  products.resize(m * pitch);
  testNorms.resize(m);
  outputs.resize(m);
}

template <typename T>
void GenericPredictor<T>::predict(HostVector<T>& output, zelmag::AbstractMatrix<T>& test) {
  output.fill(0);
  size(test);
  if (params->problemKind == ProblemKind::regression) {
    computeDecisionValues(output, test, model->coefficients(), model->rho()[0]);
    for (auto* handler : handlers) handler->handle(output, output, *model);
  } else {
    predictPairs(output, test);
  }
  if (zel::verbose) zel::printMessage("\n");
}

template <typename T>
void GenericPredictor<T>::predictPairs(HostVector<T>& output, zelmag::AbstractMatrix<T>& test) {
  const std::uint64_t n = output.size();
  const std::uint64_t k = model->labels().size();
  HostVector<T> decisionValues(pairCount(k) * n);
  HostVector<T> functionCoefficients(svCount);
  std::uint64_t q = 0;
  for (std::uint64_t a = 0; a < k; ++a)
    for (std::uint64_t b = a + 1; b < k; ++b, ++q) {
      model->pairCoefficients(functionCoefficients, a, b);
      HostVector<T> slice(n, decisionValues.data() + q * n);
      computeDecisionValues(slice, test, functionCoefficients, model->rho()[q]);
    }
  for (auto* handler : handlers) handler->handle(output, decisionValues, *model);
}

template <typename T>
void GenericPredictor<T>::computeDecisionValues(HostVector<T>& output,
                                                zelmag::AbstractMatrix<T>& test,
                                                const HostVector<T>& functionCoefficients, T rho) {
  coefficients.copyFrom(functionCoefficients, 0, 0, svCount);
  for (std::uint64_t start = 0; start < test.rows(); start += blockSize) {
    const std::uint64_t count = std::min(blockSize, test.rows() - start);
    vectors->blockProducts(test.deviceRows(start, count), test.cols(), products, pitch, count);
    testNorms.copyFrom(test.rowNorms(), 0, start, count);
    launchDecisionValues(count);
    zel::launch(decisionReductionKernel<T>, {static_cast<unsigned>(count), blockThreads},
                outputs.data(), partials.data(), rho, parts);
    output.copyFrom(outputs, start, 0, count);
  }
  if (zel::verbose) zel::printMessage(".");
}

template <typename T>
void GenericPredictor<T>::launchDecisionValues(std::uint64_t count) {
  const dim3 grid{parts, static_cast<unsigned>(count)};
  const auto run = [&](auto* kernel) {
    zel::launch(kernel, {grid, blockThreads}, partials.data(), testNorms.data(),
                coefficients.data(), svNorms.data(), svCount, products.data(), pitch);
  };
  switch (params->kernelType) {
    case SVM_KERNEL_POLYNOMIAL:
      return run(decisionValueKernel<T, SVM_KERNEL_POLYNOMIAL>);
    case SVM_KERNEL_RADIAL:
      return run(decisionValueKernel<T, SVM_KERNEL_RADIAL>);
    case SVM_KERNEL_SIGMOID:
      return run(decisionValueKernel<T, SVM_KERNEL_SIGMOID>);
    case SVM_KERNEL_LINEAR:
    case SVM_KERNEL_UNSUPPORTED:
      return run(decisionValueKernel<T, SVM_KERNEL_LINEAR>);
  }
}

template class GenericPredictor<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
