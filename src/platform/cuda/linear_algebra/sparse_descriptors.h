// Short-lived cuSPARSE descriptors that are destroyed on every path.
#pragma once

#include <cusparse.h>

#include <cstdint>

#include "platform/cuda/linear_algebra/linear_algebra.h"

namespace zellas {

// Owns one descriptor.
template <typename Handle, auto destroy>
class Descriptor {
 public:
  Descriptor() = default;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (object != nullptr) destroy(object);
  }
  [[nodiscard]] Handle get() const { return object; }

 protected:
  Handle object = nullptr;
};

// A dense device vector of size elements.
class DnVec : public Descriptor<cusparseDnVecDescr_t, cusparseDestroyDnVec> {
 public:
  DnVec(std::uint64_t size, double* values) {
    zelSafeSparseCall(
        cusparseCreateDnVec(&object, static_cast<std::int64_t>(size), values, CUDA_R_64F));
  }
};

// A column-major dense device matrix.
class DnMatrix : public Descriptor<cusparseDnMatDescr_t, cusparseDestroyDnMat> {
 public:
  DnMatrix(std::uint64_t rows, std::uint64_t cols, std::uint64_t ld, double* values) {
    zelSafeSparseCall(cusparseCreateDnMat(
        &object, static_cast<std::int64_t>(rows), static_cast<std::int64_t>(cols),
        static_cast<std::int64_t>(ld), values, CUDA_R_64F, CUSPARSE_ORDER_COL));
  }
};

// A sparse device vector of size elements, count of them stored.
class SpVec : public Descriptor<cusparseSpVecDescr_t, cusparseDestroySpVec> {
 public:
  SpVec(std::uint64_t size, std::uint64_t count, int* indices, double* values) {
    zelSafeSparseCall(cusparseCreateSpVec(
        &object, static_cast<std::int64_t>(size), static_cast<std::int64_t>(count), indices, values,
        CUSPARSE_INDEX_32I, CUSPARSE_INDEX_BASE_ZERO, CUDA_R_64F));
  }
};

}  // namespace zellas
