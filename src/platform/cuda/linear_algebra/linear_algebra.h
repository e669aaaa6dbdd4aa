// Linear algebra on the device: contexts and matrices over cuBLAS and cuSPARSE. All products are in
// double precision and queued on the default stream; each gives the same bits in every run.
#pragma once

#include <cublas_v2.h>
#include <cusparse.h>

#include <cstdint>
#include <source_location>

#include "platform/cuda/runtime/device_vector.h"

namespace zellas {

[[noreturn]] void throwBlasError(cublasStatus_t status, const std::source_location& where);
[[noreturn]] void throwSparseError(cusparseStatus_t status, const std::source_location& where);

// Throw RuntimeException with the library's text and the place of the call unless status is 0.
inline void zelSafeBlasCall(cublasStatus_t status,
                            const std::source_location& where = std::source_location::current()) {
  if (status != CUBLAS_STATUS_SUCCESS) throwBlasError(status, where);
}

inline void zelSafeSparseCall(cusparseStatus_t status,
                              const std::source_location& where = std::source_location::current()) {
  if (status != CUSPARSE_STATUS_SUCCESS) throwSparseError(status, where);
}

// A library's state.
class LasContext {
 public:
  LasContext() = default;
  LasContext(const LasContext&) = delete;
  LasContext& operator=(const LasContext&) = delete;
  virtual ~LasContext() = default;
};

class BlasContext : public LasContext {
 public:
  ~BlasContext() override;
  // Makes the library handle; throws RuntimeException.
  void create();
  // Throws RuntimeException before create().
  cublasHandle_t& handle();

 private:
  cublasHandle_t library = nullptr;
};

template <typename T>
class SparseContext : public LasContext {
 public:
  ~SparseContext() override;
  void create();
  [[nodiscard]] cusparseHandle_t handle() const { return library; }

 private:
  cusparseHandle_t library = nullptr;
};

// Device work space of products.
class WorkBuffer {
 public:
  // At least so many bytes; it only grows. Null for 0 bytes when there is none yet.
  void* prepared(std::size_t bytes);

 private:
  zel::DeviceVector<unsigned char> memory;
};

// Device view of a row-major matrix of rows samples: in column-major terms A is cols x rows, one
// sample per column. The context and the values must outlive it.
template <typename T>
class DenseMatrix {
 public:
  DenseMatrix(BlasContext& context, T* values, std::uint64_t cols, std::uint64_t rows,
              std::uint64_t leadingDimension);

  // y = alpha op(A) x + beta y.
  void gemv(cublasOperation_t transA, T alpha, const T* x, T beta, T* y);
  // C = alpha op(A) op(B) + beta C, op(B) with n columns. k counts the rows of op(B): it may be
  // less than ldb, so that B's columns may be longer than A's.
  void gemm(cublasOperation_t transA, cublasOperation_t transB, std::uint64_t n, T alpha,
            const T* B, std::uint64_t ldb, T beta, T* C, std::uint64_t ldc);
  // First element of sample i.
  [[nodiscard]] T* sample(std::uint64_t i) { return values + i * leadingDimension; }

 private:
  BlasContext* context;
  T* values;
  std::uint64_t cols;
  std::uint64_t rows;
  std::uint64_t leadingDimension;
};

// Device view of a CSR matrix with 32-bit zero-based indices. Context and vectors must outlive it.
// Several threads may use one context, but not one matrix.
template <typename T>
class SparseMatrix {
 public:
  SparseMatrix(SparseContext<T>& context, zel::DeviceVector<T>& values,
               zel::DeviceVector<int>& columnIndices, zel::DeviceVector<int>& rowOffsets,
               std::uint64_t rows, std::uint64_t cols);
  SparseMatrix(const SparseMatrix&) = delete;
  SparseMatrix& operator=(const SparseMatrix&) = delete;
  virtual ~SparseMatrix();

  // y = alpha A x + beta y; x has cols elements, y rows.
  void mv(T alpha, T* x, T beta, T* y);
  // C = alpha op(A) op(B) + beta C with column-major dense B and C; a leading dimension of 0 stands
  // for the row count of that matrix.
  void mm(cusparseOperation_t transA, cusparseOperation_t transB, std::uint64_t n, T alpha, T* B,
          std::uint64_t ldb, T beta, T* C, std::uint64_t ldc);
  // Writes the stored values at positions first … first + count - 1 into the cleared dense vector x
  // of cols elements, each at its column.
  void scatterRow(T* x, std::uint64_t first, std::uint64_t count);

 private:
  SparseContext<T>* context;
  cusparseSpMatDescr_t descriptor = nullptr;
  zel::DeviceVector<T>* values;
  zel::DeviceVector<int>* columnIndices;
  std::uint64_t rows;
  std::uint64_t cols;
  WorkBuffer workBuffer;
  // Copies of one sparse row on its way into a dense vector.
  zel::DeviceVector<T> scratchValues;
  zel::DeviceVector<int> scratchIndices;
};

}  // namespace zellas
