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
  double* rowsOf(const unsigned* numbers, std::uint64_t count) override;
  void productsWithin(std::span<const unsigned> numbers, double* result,
                      std::uint64_t resultStride) override;
  [[nodiscard]] std::uint64_t cols() const override { return colCount; }
  [[nodiscard]] std::uint64_t rowsAtOnce() const override;

 private:
  std::uint64_t colCount;
  zellas::BlasContext* context;
  unsigned gatherLimit;
  DenseRows values;
  zellas::DenseMatrix<double> matrix;
  zel::DeviceVector<unsigned> chosen;
  zel::DeviceVector<double> gathered;
};

}  // namespace zelsvm
