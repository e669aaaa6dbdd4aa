// Reading into compressed rows.
#pragma once

#include "files/user_file_reader.h"

namespace zelsvm {

// Stores every pair in file order, zeros and repeated indices too. Throws RuntimeException when the
// columns or the number of pairs do not fit 32-bit integers.
template <typename T>
class SparseFileReader : public UserFileReader<T> {
 public:
  using UserFileReader<T>::UserFileReader;

  bool loadRows(T* values, int* columnIndices, int* rowOffsets, T* leading) override;
  [[nodiscard]] std::uint64_t valueCount() const override { return this->valueTotal(); }
  [[nodiscard]] std::unique_ptr<zelmag::AbstractMatrix<T>> matrix() override;

  // Zero-based column of each value.
  [[nodiscard]] HostVector<int>& columnIndices();
  // rows + 1 positions among the values, from 0 to their number.
  [[nodiscard]] HostVector<int>& rowOffsets();

 protected:
  bool loadArrays() override;

 private:
  HostVector<int> columnVector;
  HostVector<int> offsetVector;
};

}  // namespace zelsvm
