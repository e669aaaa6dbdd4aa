#include "data/kernel_matrix.h"

#include <utility>

#include "base/errors.h"

namespace zelmag {

using zelsvm::HostVector;

namespace {

[[noreturn]] void refuse() { throw zel::AppException("Kernel values have no features."); }

}  // namespace

KernelMatrix::KernelMatrix(std::shared_ptr<const KernelValues> values,
                           std::uint64_t trainingSamples, std::uint64_t rows)
    : AbstractMatrix<double>(trainingSamples, rows), given(std::move(values)) {
  norms.fill(0);
}

KernelMatrix::KernelMatrix(const zel::IndexList<>& numbers, std::uint64_t trainingSamples)
    : AbstractMatrix<double>(trainingSamples, numbers.size()) {
  norms.fill(0);
  setRowIds(numbers);
}

KernelMatrix::KernelMatrix(const KernelMatrix& source, const zel::IndexList<>& selection)
    : AbstractMatrix<double>(source.features(), selection.size()), given(source.given) {
  inheritRows(source, selection);
}

std::unique_ptr<AbstractMatrix<double>> KernelMatrix::subset(
    const zel::IndexList<>& selection) const {
  return std::unique_ptr<AbstractMatrix<double>>(new KernelMatrix(*this, selection));
}

std::unique_ptr<AbstractMatrix<double>> KernelMatrix::scaledCopy(
    const zel::Interval& /*range*/, const HostVector<zel::Interval>& /*bounds*/) const {
  refuse();
}

std::unique_ptr<AbstractMatrix<double>> KernelMatrix::moved(const ColumnMove& /*move*/) const {
  refuse();
}

void KernelMatrix::copyRow(double* /*target*/, std::uint64_t /*row*/, bool /*clear*/) const {
  refuse();
}

void KernelMatrix::collectBounds(HostVector<zel::Interval>& /*bounds*/) const { refuse(); }

std::uint64_t KernelMatrix::scaledValueCount(const zel::Interval& /*range*/,
                                             const HostVector<zel::Interval>& /*bounds*/) const {
  refuse();
}

void KernelMatrix::exportScaled(double* /*values*/, int* /*columnIndices*/, int* /*rowOffsets*/,
                                const zel::Interval& /*range*/,
                                const HostVector<zel::Interval>& /*bounds*/) const {
  refuse();
}

}  // namespace zelmag
