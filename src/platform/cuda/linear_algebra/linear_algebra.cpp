#include "platform/cuda/linear_algebra/linear_algebra.h"

#include <cstdio>
#include <limits>

#include "base/errors.h"
#include "platform/cuda/linear_algebra/sparse_descriptors.h"
#include "platform/cuda/runtime/device.h"

namespace zellas {
namespace {

const char* blasText(int status) {
  switch (status) {
    case 1:
      return "not initialized";
    case 3:
      return "alloc failed";
    case 7:
      return "invalid value";
    case 8:
      return "arch mismatch";
    case 11:
      return "mapping error";
    case 13:
      return "execution failed";
    case 14:
      return "internal error";
    default:
      return "unknown";
  }
}

[[noreturn]] void throwLibraryError(const char* library, const char* text,
                                    const std::source_location& where) {
  char message[zel::messageCapacity];
  std::snprintf(message, sizeof message, "%s runtime error - %s\n", library, text);
  zel::throwRuntimeException(message, zel::sourceName(where).c_str(),
                             static_cast<int>(where.line()));
}

// The library counts in int.
int blasInt(std::uint64_t n) {
  if (n > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
    throw zel::RuntimeException("The matrix is too large for the linear algebra library.");
  return static_cast<int>(n);
}

}  // namespace

void throwBlasError(cublasStatus_t status, const std::source_location& where) {
  throwLibraryError("CUBLAS", blasText(status), where);
}

void throwSparseError(cusparseStatus_t status, const std::source_location& where) {
  throwLibraryError("CUSPARSE", cusparseGetErrorString(status), where);
}

BlasContext::~BlasContext() {
  if (library != nullptr) cublasDestroy_v2(library);
}

void BlasContext::create() { zelSafeBlasCall(cublasCreate_v2(&library)); }

cublasHandle_t& BlasContext::handle() {
  if (library == nullptr) throw zel::RuntimeException("Uninitialized CuBlas runtime");
  return library;
}

template <typename T>
SparseContext<T>::~SparseContext() {
  if (library != nullptr) cusparseDestroy(library);
}

template <typename T>
void SparseContext<T>::create() {
  zelSafeSparseCall(cusparseCreate(&library));
}

void* WorkBuffer::prepared(std::size_t bytes) {
  // A product still running may be using the old memory.
  if (memory.size() != 0 && memory.capacity() < bytes) zel::zelSafeCall(cudaDeviceSynchronize());
  if (bytes != 0) memory.resize(bytes);
  return memory.data();
}

template <typename T>
DenseMatrix<T>::DenseMatrix(BlasContext& context, T* values, std::uint64_t cols, std::uint64_t rows,
                            std::uint64_t leadingDimension)
    : context(&context),
      values(values),
      cols(cols),
      rows(rows),
      leadingDimension(leadingDimension) {}

template <typename T>
void DenseMatrix<T>::gemv(cublasOperation_t transA, T alpha, const T* x, T beta, T* y) {
  const int m = blasInt(transA == CUBLAS_OP_N ? cols : rows);
  const int k = blasInt(transA == CUBLAS_OP_N ? rows : cols);
  cublasHandle_t library = context->handle();
  cublasMath_t mode = CUBLAS_DEFAULT_MATH;
  zelSafeBlasCall(cublasGetMathMode(library, &mode));
  const bool pedantic = (static_cast<int>(mode) & 15) == CUBLAS_PEDANTIC_MATH;
  const auto compute = pedantic ? CUBLAS_COMPUTE_64F_PEDANTIC : CUBLAS_COMPUTE_64F;
  zelSafeBlasCall(cublasGemmEx(library, transA, CUBLAS_OP_N, m, 1, k, &alpha, values, CUDA_R_64F,
                               blasInt(leadingDimension), x, CUDA_R_64F, k, &beta, y, CUDA_R_64F, m,
                               compute, CUBLAS_GEMM_DEFAULT));
}

template <typename T>
void DenseMatrix<T>::gemm(cublasOperation_t transA, cublasOperation_t transB, std::uint64_t n,
                          T alpha, const T* B, std::uint64_t ldb, T beta, T* C, std::uint64_t ldc) {
  const int m = blasInt(transA == CUBLAS_OP_N ? cols : rows);
  const int k = blasInt(transA == CUBLAS_OP_N ? rows : cols);
  zelSafeBlasCall(cublasDgemm_v2(context->handle(), transA, transB, m, blasInt(n), k, &alpha,
                                 values, blasInt(leadingDimension), B, blasInt(ldb), &beta, C,
                                 blasInt(ldc)));
}

template <typename T>
SparseMatrix<T>::SparseMatrix(SparseContext<T>& context, zel::DeviceVector<T>& values,
                              zel::DeviceVector<int>& columnIndices,
                              zel::DeviceVector<int>& rowOffsets, std::uint64_t rows,
                              std::uint64_t cols)
    : context(&context), values(&values), columnIndices(&columnIndices), rows(rows), cols(cols) {
  zelSafeSparseCall(cusparseCreateCsr(
      &descriptor, static_cast<std::int64_t>(rows), static_cast<std::int64_t>(cols),
      static_cast<std::int64_t>(values.size()), rowOffsets.data(), columnIndices.data(),
      values.data(), CUSPARSE_INDEX_32I, CUSPARSE_INDEX_32I, CUSPARSE_INDEX_BASE_ZERO, CUDA_R_64F));
}

template <typename T>
SparseMatrix<T>::~SparseMatrix() {
  cusparseDestroySpMat(descriptor);
}

template <typename T>
void SparseMatrix<T>::mv(T alpha, T* x, T beta, T* y) {
  const DnVec input(cols, x);
  const DnVec output(rows, y);
  std::size_t bytes = 0;
  zelSafeSparseCall(cusparseSpMV_bufferSize(context->handle(), CUSPARSE_OPERATION_NON_TRANSPOSE,
                                            &alpha, descriptor, input.get(), &beta, output.get(),
                                            CUDA_R_64F, CUSPARSE_SPMV_CSR_ALG2, &bytes));
  void* const buffer = workBuffer.prepared(bytes);
  zelSafeSparseCall(cusparseSpMV(context->handle(), CUSPARSE_OPERATION_NON_TRANSPOSE, &alpha,
                                 descriptor, input.get(), &beta, output.get(), CUDA_R_64F,
                                 CUSPARSE_SPMV_CSR_ALG2, buffer));
}

template <typename T>
void SparseMatrix<T>::mm(cusparseOperation_t transA, cusparseOperation_t transB, std::uint64_t n,
                         T alpha, T* B, std::uint64_t ldb, T beta, T* C, std::uint64_t ldc) {
  const bool plainA = transA == CUSPARSE_OPERATION_NON_TRANSPOSE;
  const std::uint64_t m = plainA ? rows : cols;
  const std::uint64_t k = plainA ? cols : rows;
  const bool plainB = transB == CUSPARSE_OPERATION_NON_TRANSPOSE;
  const std::uint64_t rowsB = plainB ? k : n;
  const DnMatrix input(rowsB, plainB ? n : k, ldb == 0 ? rowsB : ldb, B);
  const DnMatrix output(m, n, ldc == 0 ? m : ldc, C);
  std::size_t bytes = 0;
  zelSafeSparseCall(cusparseSpMM_bufferSize(context->handle(), transA, transB, &alpha, descriptor,
                                            input.get(), &beta, output.get(), CUDA_R_64F,
                                            CUSPARSE_SPMM_CSR_ALG3, &bytes));
  void* const buffer = workBuffer.prepared(bytes);
  zelSafeSparseCall(cusparseSpMM(context->handle(), transA, transB, &alpha, descriptor, input.get(),
                                 &beta, output.get(), CUDA_R_64F, CUSPARSE_SPMM_CSR_ALG3, buffer));
}

template <typename T>
void SparseMatrix<T>::scatterRow(T* x, std::uint64_t first, std::uint64_t count) {
  scratchValues.resize(count);
  scratchIndices.resize(count);
  scratchValues.copyFrom(*values, 0, first, count);
  scratchIndices.copyFrom(*columnIndices, 0, first, count);
  const SpVec row(cols, count, scratchIndices.data(), scratchValues.data());
  const DnVec output(cols, x);
  zelSafeSparseCall(cusparseScatter(context->handle(), row.get(), output.get()));
  zel::zelSafeCall(cudaDeviceSynchronize());
}

template class SparseContext<double>;
template class DenseMatrix<double>;
template class SparseMatrix<double>;

}  // namespace zellas
