// Samples as compressed sparse rows, their columns ascending and distinct.
#pragma once

#include <vector>

#include "platform/cuda/machine/device_samples.h"

namespace zelsvm {

struct AscendingRows;

class SparseSamples : public DeviceSamples {
 public:
  SparseSamples(const zelmag::AbstractMatrix<double>& source,
                zellas::SparseContext<double>& context);

  void rowProducts(double* result, std::uint64_t sample) override;
  void blockProducts(double* block, std::uint64_t blockStride, double* result,
                     std::uint64_t resultStride, std::uint64_t count) override;
  double* rows(std::uint64_t first, std::uint64_t count) override;
  double* rowsOf(const unsigned* numbers, std::uint64_t count) override;
  void productsWithin(std::span<const unsigned> numbers, double* result,
                      std::uint64_t resultStride) override;
  [[nodiscard]] std::uint64_t cols() const override { return source->cols(); }
  // Many columns make dense rows large, while the data themselves may take little.
  [[nodiscard]] std::uint64_t rowsAtOnce() const override;

 private:
  SparseSamples(const zelmag::AbstractMatrix<double>& source, const AscendingRows& rows,
                zellas::SparseContext<double>& context);
  // Samples numbers[0] … or, without numbers, first … as dense rows.
  double* layOut(const unsigned* numbers, std::uint64_t first, std::uint64_t count);

  const zelmag::AbstractMatrix<double>* source;
  zellas::SparseContext<double>* context;
  std::vector<int> offsets;
  zel::DeviceVector<double> values;
  zel::DeviceVector<int> columnIndices;
  zel::DeviceVector<int> rowOffsets;
  zellas::SparseMatrix<double> matrix;
  zel::DeviceVector<double> scattered;
  zel::DeviceVector<double> block;  // rows laid out
  zel::DeviceVector<double> chosenValues;
  zel::DeviceVector<int> chosenColumns;
  zel::DeviceVector<int> chosenOffsets;
  zel::DeviceVector<unsigned> chosen;
};

}  // namespace zelsvm
