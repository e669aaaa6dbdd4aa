// Computes rows of the kernel matrix, several at once where that is cheaper.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"
#include "data/scaled_sparse_rows.h"
#include "platform/host/rows/packed_samples.h"
#include "platform/host/rows/sparse_columns.h"
#include "platform/host/sweeps/host_kernel.h"

namespace zelsvm {

// A sample and the memory for its row: roundedCapacity(samples) elements, of which the first
// `samples` are the row.
struct RowTarget {
  std::uint64_t sample;
  double* values;
};

// One solve after the other; memory is kept for the next. All throw std::bad_alloc.
class KernelRows {
 public:
  // The matrix must outlive the solve.
  void assign(const zelmag::AbstractMatrix<double>& samples, const HostKernel& kernel);
  // Rows beyond the first are cheaper up to so many; 1 where they are not.
  [[nodiscard]] unsigned mostTogether() const;
  // Equal bits for a row whichever rows are computed with it.
  void compute(const RowTarget* rows, unsigned count);

  // Single kernel values, far cheaper than rows. Names the samples that pairValues speaks of.
  void choose(const std::vector<std::uint64_t>& chosen);
  // values[t] = K of the c-th and the t-th sample, for all of them.
  void pairValues(std::size_t c, double* values) const;

 private:
  template <typename Body>
  void forEachChosen(const Body& body) const;
  void computePacked(const RowTarget* rows, unsigned count);
  void computePanels(const RowTarget* rows, unsigned count, std::uint64_t begin,
                     std::uint64_t end) const;
  void computeSparse(const RowTarget& row);

  const zelmag::AbstractMatrix<double>* samples = nullptr;
  const double* norms = nullptr;
  HostKernel kernel;
  bool packed = true;
  PackedSamples packedSamples;
  SparseColumns sparseColumns;
  HostVector<double> denseRows;
  std::vector<const double*> factors;
  std::vector<double> chosenNorms;
  zelmag::AscendingRow<double> ascending;
  std::vector<SparseEntry> entries;
};

}  // namespace zelsvm
