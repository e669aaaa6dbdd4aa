// Samples that are known by their kernel values only.
#pragma once

#include <cstdint>
#include <memory>

#include "data/kernel_values.h"
#include "data/matrix.h"

namespace zelmag {

// Its columns are the training samples, its rows samples of the kernel values. Subsets hold numbers
// of rows and look at the same values. There are no features: what asks for them throws
// AppException.
class KernelMatrix : public AbstractMatrix<double> {
 public:
  KernelMatrix(std::shared_ptr<const KernelValues> values, std::uint64_t trainingSamples,
               std::uint64_t rows);
  // Training samples by their numbers alone: the support vectors of a model that outlives its
  // training's kernel values.
  KernelMatrix(const zel::IndexList<>& numbers, std::uint64_t trainingSamples);

  [[nodiscard]] const KernelValues* kernelValues() const override { return given.get(); }
  [[nodiscard]] const double* values() const override { return nullptr; }
  [[nodiscard]] std::uint64_t valueCount() const override { return 0; }
  [[nodiscard]] std::unique_ptr<AbstractMatrix<double>> subset(
      const zel::IndexList<>& selection) const override;

  [[nodiscard]] std::unique_ptr<AbstractMatrix<double>> scaledCopy(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<double>> moved(
      const ColumnMove& move) const override;
  void copyRow(double* target, std::uint64_t row, bool clear) const override;
  void collectBounds(zelsvm::HostVector<zel::Interval>& bounds) const override;
  [[nodiscard]] std::uint64_t scaledValueCount(
      const zel::Interval& range, const zelsvm::HostVector<zel::Interval>& bounds) const override;
  void exportScaled(double* values, int* columnIndices, int* rowOffsets, const zel::Interval& range,
                    const zelsvm::HostVector<zel::Interval>& bounds) const override;

 private:
  KernelMatrix(const KernelMatrix& source, const zel::IndexList<>& selection);

  std::shared_ptr<const KernelValues> given;
};

}  // namespace zelmag
