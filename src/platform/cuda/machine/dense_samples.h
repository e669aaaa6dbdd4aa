// Samples with every value, also of matrices that lack a few.
#pragma once

#include "platform/cuda/machine/device_samples.h"

namespace zelsvm {

class DenseSamples : public DeviceSamples {
 public:
  DenseSamples(const zelmag::AbstractMatrix<double>& source, zellas::BlasContext& context);

  void rowProducts(double* result, std::uint64_t sample) override;
  void blockProducts(double* block, std::uint64_t blockStride, double* result,
                     std::uint64_t resultStride, std::uint64_t count) override;
  // In place.
  double* rows(std::uint64_t first, std::uint64_t count) override;
  [[nodiscard]] std::uint64_t cols() const override { return colCount; }
  [[nodiscard]] std::uint64_t rowsAtOnce() const override;

 private:
  std::uint64_t colCount;
  DenseRows values;
  zellas::DenseMatrix<double> matrix;
};

}  // namespace zelsvm
