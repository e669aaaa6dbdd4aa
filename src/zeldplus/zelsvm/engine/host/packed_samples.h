// The samples of a solve as the host's row products want them.
#pragma once

#include <cstdint>

#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/data/matrix.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Every element of every sample, in panels (row_products.h); the last panel is filled up with
// zeros. In a sparse row an entry that repeats a column adds to it.
class PackedSamples {
 public:
  // Throws RuntimeException when memory runs out.
  void assign(const zelmag::AbstractMatrix<double>& matrix);

  [[nodiscard]] std::uint64_t panels() const { return panelCount; }
  [[nodiscard]] std::uint64_t length() const { return cols; }
  [[nodiscard]] std::uint64_t bytes() const { return elements.size() * sizeof(double); }
  [[nodiscard]] const double* panel(std::uint64_t p) const;

 private:
  void packDense(const zelmag::AbstractMatrix<double>& matrix);
  void packSparse(const zelmag::AbstractMatrix<double>& matrix);

  std::uint64_t panelCount = 0;
  std::uint64_t cols = 0;
  zel::DeviceVector<double> elements;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
