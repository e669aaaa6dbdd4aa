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
  [[nodiscard]] std::uint64_t cols() const override { return source->cols(); }
  // Many columns make dense rows large, while the data themselves may take little.
  [[nodiscard]] std::uint64_t rowsAtOnce() const override;

 private:
  SparseSamples(const zelmag::AbstractMatrix<double>& source, const AscendingRows& rows,
                zellas::SparseContext<double>& context);

  const zelmag::AbstractMatrix<double>* source;
  std::vector<int> offsets;
  zel::DeviceVector<double> values;
  zel::DeviceVector<int> columnIndices;
  zel::DeviceVector<int> rowOffsets;
  zellas::SparseMatrix<double> matrix;
  zel::DeviceVector<double> scattered;
  DenseRows block;
};

}  // namespace zelsvm
