#include "platform/host/rows/row_costs.h"

#include "platform/host/sweeps/host_kernel.h"
#include "platform/system/available_memory.h"

namespace zelsvm {
namespace {

constexpr double nanosecondsPerProduct = 0.04;
// From this share of stored elements on, packed samples are the faster ones (measured).
constexpr double packedShare = 0.2;
// Packing may take this part of what memory is left.
constexpr std::uint64_t memoryPart = 4;

}  // namespace

double packedNanoseconds(std::uint64_t features, double functionNanoseconds) {
  return nanosecondsPerProduct * static_cast<double>(features) + functionNanoseconds;
}

bool packingPays(const zelmag::AbstractMatrix<double>& matrix) {
  if (!matrix.isSparse()) return true;
  const double elements = static_cast<double>(matrix.rows()) * static_cast<double>(matrix.cols());
  return static_cast<double>(matrix.valueCount()) >= packedShare * elements &&
         elements * sizeof(double) <= static_cast<double>(zel::availableHostMemory() / memoryPart);
}

// Stored values are taken to be spread evenly.
double rowNanoseconds(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t samples,
                      SVM_KERNEL kernelType) {
  const auto count = static_cast<double>(samples);
  const double function = HostKernel::nanosecondsOf(kernelType);
  if (packingPays(matrix)) return count * packedNanoseconds(matrix.cols(), function);
  const double perRow =
      static_cast<double>(matrix.valueCount()) / static_cast<double>(matrix.rows());
  const double met = perRow * perRow / static_cast<double>(matrix.cols());
  return count * (nanosecondsPerSparseValue * met + function);
}

}  // namespace zelsvm
