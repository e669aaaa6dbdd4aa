// Which reader a file gets.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "files/dense_file_reader.h"
#include "files/sparse_file_reader.h"

namespace zelsvm {

// The reader kind asked for. Throws RuntimeException for an index base other than 0 and 1.
template <typename T>
std::unique_ptr<UserFileReader<T>> createReader(const std::string& path, std::uint64_t indexBase,
                                                bool dense) {
  if (dense) return std::make_unique<DenseFileReader<T>>(path, indexBase);
  return std::make_unique<SparseFileReader<T>>(path, indexBase);
}

}  // namespace zelsvm
