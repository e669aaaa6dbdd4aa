#include "zeldplus/zelsvm/model/rspredictor.h"

#include <algorithm>
#include <string>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/zelsvm/engine/device_context.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t minBlockSize = 4;
constexpr std::uint64_t maxBlockSize = 256;
// Decision values of a block, which many functions make large.
constexpr std::uint64_t maxValueBytes = std::uint64_t{64} << 20;
// Sparse rows of a block, laid out densely: the data themselves may take less.
constexpr std::uint64_t maxDenseBytes = std::uint64_t{16} << 20;

// The one vector of a model of one label has no weight, which an infinite kernel value would turn
// into no number.
template <typename T>
bool isConstant(const GenericModel<T>& model) {
  return model.coefficients().size() == 1 && model.coefficients()[0] == 0;
}

// One dot per function, spread over the samples.
void showProgress(std::uint64_t functions, std::uint64_t before, std::uint64_t after,
                  std::uint64_t samples) {
  const std::uint64_t dots = functions * after / samples - functions * before / samples;
  if (zel::isVerbose() && dots != 0) zel::printMessage("%s", std::string(dots, '.').c_str());
}

}  // namespace

template <typename T>
GenericPredictor<T>::GenericPredictor(const SvmContext<T>& params, const GenericModel<T>& model)
    : params(&params),
      model(&model),
      vectors(&model.vectors()),
      pitch(zel::roundedCapacity(vectors->rows())),
      functions(params, model) {
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
  const std::uint64_t available = zel::freeDeviceMemory() / 2;
  const std::uint64_t valueBytes = functions.count() * sizeof(T);
  const std::uint64_t bytesPerSample =
      pitch * sizeof(T) + functions.bytesPerSample() + valueBytes + 16;
  const auto fitting = static_cast<std::uint32_t>(available / bytesPerSample + 3) & ~3u;
  blockSize = std::clamp<std::uint64_t>(fitting, minBlockSize, maxBlockSize);
  blockSize = std::clamp(maxValueBytes / valueBytes, minBlockSize, blockSize);
  // Sparse rows are laid out densely on the device, which many columns make large.
  if (test.isSparse())
    blockSize = std::clamp(std::min(available / 4, maxDenseBytes) / (test.cols() * sizeof(T)),
                           minBlockSize, blockSize);
  const std::uint64_t m = std::min(test.rows(), blockSize);
  products.resize(m * pitch);
  testNorms.resize(m);
  values.resize(m * functions.count());
}

template <typename T>
void GenericPredictor<T>::predict(HostVector<T>& output, zelmag::AbstractMatrix<T>& test) {
  output.fill(0);
  size(test);
  if (params->problemKind == ProblemKind::regression) {
    forEachBlock(test, [&](std::uint64_t first, std::uint64_t count) {
      output.copyFrom(values, first, 0, count);
    });
    for (auto* handler : handlers) handler->handle(output, output, *model);
  } else {
    predictPairs(output, test);
  }
  if (zel::isVerbose()) zel::printMessage("\n");
}

template <typename T>
void GenericPredictor<T>::predictPairs(HostVector<T>& output, zelmag::AbstractMatrix<T>& test) {
  const std::uint64_t n = output.size();
  HostVector<T> decisionValues(functions.count() * n);
  HostVector<T> block(values.size());
  forEachBlock(test, [&](std::uint64_t first, std::uint64_t count) {
    block.copyFrom(values, 0, 0, functions.count() * count);
    for (std::uint64_t f = 0; f < functions.count(); ++f)
      std::copy_n(block.at(f * count), count, decisionValues.at(f * n + first));
  });
  if (isConstant(*model)) decisionValues.fill(-model->rho()[0]);
  for (auto* handler : handlers) handler->handle(output, decisionValues, *model);
}

template <typename T>
template <typename Take>
void GenericPredictor<T>::forEachBlock(zelmag::AbstractMatrix<T>& test, Take take) {
  const std::uint64_t n = test.rows();
  for (std::uint64_t start = 0; start < n; start += blockSize) {
    const std::uint64_t count = std::min(blockSize, n - start);
    vectors->blockProducts(test.deviceRows(start, count), test.cols(), products, pitch, count);
    testNorms.copyFrom(test.rowNorms(), 0, start, count);
    functions.evaluate(values, products, pitch, testNorms, count);
    take(start, count);
    showProgress(functions.count(), start, start + count, n);
  }
}

template class GenericPredictor<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
