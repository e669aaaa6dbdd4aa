// From a file to a matrix.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "zeldplus/zelsvm/data/dense_file_reader.h"
#include "zeldplus/zelsvm/data/matrix.h"
#include "zeldplus/zelsvm/data/sparse_file_reader.h"

namespace zelsvm::inline ZEL_PLATFORM {

// The reader kind asked for. Throws RuntimeException for an index base other than 0 and 1.
template <typename T>
std::unique_ptr<UserFileReader<T>> createReader(const std::string& path, std::uint64_t indexBase,
                                                bool dense) {
  if (dense) return std::make_unique<DenseFileReader<T>>(path, indexBase);
  return std::make_unique<SparseFileReader<T>>(path, indexBase);
}

// A matrix over the arrays of a reader that has read, which must outlive it. The context's kind is
// the reader's.
template <typename T>
std::unique_ptr<zelmag::AbstractMatrix<T>> createMatrix(UserFileReader<T>& reader,
                                                        zellas::LasContext& context) {
  auto* const sparse = dynamic_cast<SparseFileReader<T>*>(&reader);
  return zelmag::createMatrix(
      reader.values().data(), sparse ? sparse->columnIndices().data() : nullptr,
      sparse ? sparse->rowOffsets().data() : nullptr, reader.cols(), reader.rows(), context);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
