// Reading into a full row-major array.
#pragma once

#include "files/user_file_reader.h"

namespace zelsvm {

// Features that a line does not name are 0; of a repeated index the last value stays.
template <typename T>
class DenseFileReader : public UserFileReader<T> {
 public:
  using UserFileReader<T>::UserFileReader;

  bool loadRows(T* values, int* columnIndices, int* rowOffsets, T* leading) override;
  [[nodiscard]] std::uint64_t valueCount() const override { return this->rows() * this->cols(); }
  [[nodiscard]] std::unique_ptr<zelmag::AbstractMatrix<T>> matrix() override;

 protected:
  bool loadArrays() override;
};

}  // namespace zelsvm
