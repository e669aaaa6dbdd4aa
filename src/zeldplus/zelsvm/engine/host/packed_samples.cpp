#include "zeldplus/zelsvm/engine/host/packed_samples.h"

#include <algorithm>

#include "zeldplus/zelsvm/engine/host/row_products.h"

namespace zelsvm::inline ZEL_PLATFORM {

void PackedSamples::assign(const zelmag::AbstractMatrix<double>& matrix) {
  cols = matrix.cols();
  panelCount = (matrix.rows() + panelSamples - 1) / panelSamples;
  elements.resize(panelCount * panelSamples * cols);
  matrix.rowOffsets() == nullptr ? packDense(matrix) : packSparse(matrix);
}

const double* PackedSamples::panel(std::uint64_t p) const {
  return elements.data() + p * panelSamples * cols;
}

void PackedSamples::packDense(const zelmag::AbstractMatrix<double>& matrix) {
  double* target = elements.data();
  for (std::uint64_t first = 0; first < matrix.rows(); first += panelSamples) {
    const std::uint64_t count = std::min(panelSamples, matrix.rows() - first);
    const double* const rows = matrix.values() + first * cols;
    for (std::uint64_t j = 0; j < cols; ++j, target += panelSamples)
      for (std::uint64_t s = 0; s < panelSamples; ++s)
        target[s] = s < count ? rows[s * cols + j] : 0;
  }
}

void PackedSamples::packSparse(const zelmag::AbstractMatrix<double>& matrix) {
  std::fill_n(elements.data(), elements.size(), 0.0);
  const int* const offsets = matrix.rowOffsets();
  for (std::uint64_t i = 0; i < matrix.rows(); ++i) {
    double* const target =
        elements.data() + i / panelSamples * panelSamples * cols + i % panelSamples;
    for (int p = offsets[i]; p < offsets[i + 1]; ++p)
      target[static_cast<std::uint64_t>(matrix.columnIndices()[p]) * panelSamples] +=
          matrix.values()[p];
  }
}

}  // namespace zelsvm::inline ZEL_PLATFORM
