// A row-major matrix that stores every value.
#pragma once

#include <cstdint>

#include "data/full_matrix.h"

namespace zelmag {

template <typename T>
class DenseMatrix : public FullMatrix<T> {
 public:
  // Takes over the vector (which may wrap memory owned elsewhere) of rows x columns values.
  DenseMatrix(zelsvm::HostVector<T>&& values, FeatureNumbers features, std::uint64_t rows);
  // Copies the selected rows of source.
  DenseMatrix(const FullMatrix<T>& source, const zel::IndexList<>& selection);

  [[nodiscard]] const T* values() const override { return elements.data(); }
  void copyStretch(T* target, std::uint64_t row, std::uint64_t begin,
                   std::uint64_t end) const override;

 private:
  zelsvm::HostVector<T> elements;
};

}  // namespace zelmag
