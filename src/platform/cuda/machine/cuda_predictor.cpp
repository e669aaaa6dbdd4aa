#include "platform/cuda/machine/cuda_predictor.h"

#include <algorithm>

#include "platform/cuda/machine/kernel_symbols.h"
#include "platform/cuda/runtime/launch.h"

namespace zelsvm {
namespace {

constexpr unsigned blockThreads = 128;
constexpr std::uint64_t mostParts = 1024;
constexpr std::uint64_t minBlockSize = 4;
constexpr std::uint64_t maxBlockSize = 256;
// Decision values of a block, which many functions make large.
constexpr std::uint64_t maxValueBytes = std::uint64_t{64} << 20;
// Sparse rows of a block, laid out densely: the data themselves may take less.
constexpr std::uint64_t maxDenseBytes = std::uint64_t{16} << 20;

}  // namespace

CudaPredictor::CudaPredictor(DeviceTurns& turns, LinearAlgebra& libraries,
                             const DecisionTask& newTask)
    : SymbolUser(turns),
      task(newTask),
      kernel(decisionValueKernelOf(task.kernel.type)),
      parts(static_cast<unsigned>(
          std::min((vectorCount() + blockThreads - 1) / blockThreads, mostParts))),
      pitch(zel::roundedCapacity(vectorCount())) {
  const DeviceTurn turn(*this);
  vectors = makeDeviceSamples(*task.vectors, libraries);
  vectorNorms.assign({task.vectors->rowNorms().data(), vectorCount()});
  const std::uint64_t others = classCount() - 1;
  std::vector<double> byOther(vectorCount() * others);
  for (std::uint64_t v = 0; v < vectorCount(); ++v)
    for (std::uint64_t j = 0; j < others; ++j)
      byOther[j * vectorCount() + v] = task.coefficients[v * others + j];
  columns.assign(byOther);
}

void CudaPredictor::publish() { publishKernel(task.kernel); }

std::uint64_t CudaPredictor::blockSize(const zelmag::AbstractMatrix<double>& test) {
  const DeviceTurn turn(*this);
  const std::uint64_t available = zel::freeDeviceMemory() / 2;
  const std::uint64_t valueBytes = functionCount() * sizeof(double);
  const std::uint64_t bytesPerSample = (pitch + parts) * sizeof(double) + valueBytes + 16;
  const std::uint64_t fitting = (available / bytesPerSample + 3) & ~std::uint64_t{3};
  std::uint64_t size = std::clamp(fitting, minBlockSize, maxBlockSize);
  size = std::clamp(maxValueBytes / valueBytes, minBlockSize, size);
  if (!test.isSparse()) return size;
  const std::uint64_t denseBytes = std::min(available / 4, maxDenseBytes);
  return std::clamp(denseBytes / DenseRows::rowBytes(test), minBlockSize, size);
}

void CudaPredictor::decide(const zelmag::AbstractMatrix<double>& test, std::uint64_t first,
                           std::uint64_t count, double* target) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  products.resize(count * pitch);
  partials.resize(count * parts);
  values.resize(count * functionCount());
  testNorms.assign({test.rowNorms().data() + first, count});
  vectors->blockProducts(testRows.load(test, first, count), test.cols(), products.data(), pitch,
                         count);
  std::uint64_t function = 0;
  for (std::uint64_t a = 0; a < classCount(); ++a)
    for (std::uint64_t b = a + 1; b < classCount(); ++b)
      addUp(function++, pairCoefficients(a, b), count);
  values.download({target, count * functionCount()});
}

// A vector of another class has no weight.
const double* CudaPredictor::pairCoefficients(std::uint64_t a, std::uint64_t b) {
  if (classCount() == 2) return columns.data();
  coefficients.resize(vectorCount());
  coefficients.clear();
  const auto take = [&](std::uint64_t cls, std::uint64_t column) {
    const std::uint64_t start = task.classStarts[cls];
    coefficients.copyFrom(columns, start, column * vectorCount() + start,
                          task.classStarts[cls + 1] - start);
  };
  take(a, b - 1);
  take(b, a);
  return coefficients.data();
}

void CudaPredictor::addUp(std::uint64_t function, const double* weights, std::uint64_t count) {
  const auto samples = static_cast<unsigned>(count);
  zel::launch(kernel, {dim3{parts, samples}, blockThreads}, partials.data(), testNorms.data(),
              weights, vectorNorms.data(), vectorCount(), products.data(), pitch);
  zel::launch(decisionReductionKernel<double>, {samples, blockThreads},
              values.data() + function * count, partials.data(), task.rho[function], parts);
}

}  // namespace zelsvm
