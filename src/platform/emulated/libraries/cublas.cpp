#include <cublas_v2.h>

#include <algorithm>
#include <cstdint>

#include "platform/emulated/libraries/live_objects.h"
#include "platform/emulated/runtime/allocations.h"

struct cublasContext {};

namespace zel {
namespace {

// Column-major, leading elements apart.
template <typename T>
struct Matrix {
  T* elements;
  int rows;
  int columns;
  int leading;

  [[nodiscard]] T& at(int i, int j) const {
    return elements[static_cast<std::int64_t>(j) * leading + i];
  }
  // Lies in device memory, and its leading dimension suffices.
  [[nodiscard]] bool isValid() const {
    if (leading < std::max(1, rows)) return false;
    if (rows == 0 || columns == 0) return true;
    const auto before =
        static_cast<std::uint64_t>(columns - 1) * static_cast<std::uint64_t>(leading);
    return isDeviceArray(elements, before + static_cast<std::uint64_t>(rows));
  }
};

struct Factor {
  Matrix<const double> stored;
  bool transposed;

  [[nodiscard]] double at(int i, int j) const {
    return transposed ? stored.at(j, i) : stored.at(i, j);
  }
};

Factor factor(const double* elements, cublasOperation_t operation, int rows, int columns,
              int leading) {
  const bool transposed = operation == CUBLAS_OP_T;
  return {{elements, transposed ? columns : rows, transposed ? rows : columns, leading},
          transposed};
}

bool isOperation(cublasOperation_t operation) {
  return operation == CUBLAS_OP_N || operation == CUBLAS_OP_T;
}

void multiply(double alpha, const Factor& A, const Factor& B, int k, double beta,
              const Matrix<double>& C) {
  for (int j = 0; j < C.columns; ++j)
    for (int i = 0; i < C.rows; ++i) {
      double sum = 0;
      for (int p = 0; p < k; ++p) sum += A.at(i, p) * B.at(p, j);
      C.at(i, j) = beta == 0 ? alpha * sum : alpha * sum + beta * C.at(i, j);
    }
}

}  // namespace
}  // namespace zel

cublasStatus_t cublasCreate_v2(cublasHandle_t* handle) {
  if (handle == nullptr) return CUBLAS_STATUS_INVALID_VALUE;
  *handle = zel::LiveObjects<cublasContext>::instance().add({});
  return *handle == nullptr ? CUBLAS_STATUS_ALLOC_FAILED : CUBLAS_STATUS_SUCCESS;
}

cublasStatus_t cublasDestroy_v2(cublasHandle_t handle) {
  const bool destroyed = zel::LiveObjects<cublasContext>::instance().remove(handle);
  return destroyed ? CUBLAS_STATUS_SUCCESS : CUBLAS_STATUS_NOT_INITIALIZED;
}

cublasStatus_t cublasGetMathMode(cublasHandle_t handle, cublasMath_t* mode) {
  if (!zel::isAlive(handle)) return CUBLAS_STATUS_NOT_INITIALIZED;
  if (mode == nullptr) return CUBLAS_STATUS_INVALID_VALUE;
  *mode = CUBLAS_DEFAULT_MATH;
  return CUBLAS_STATUS_SUCCESS;
}

cublasStatus_t cublasGemmEx(cublasHandle_t handle, cublasOperation_t transA,
                            cublasOperation_t transB, int m, int n, int k, const void* alpha,
                            const void* A, cudaDataType_t typeA, int lda, const void* B,
                            cudaDataType_t typeB, int ldb, const void* beta, void* C,
                            cudaDataType_t typeC, int ldc, cublasComputeType_t computeType,
                            cublasGemmAlgo_t algorithm) {
  if (!zel::isAlive(handle)) return CUBLAS_STATUS_NOT_INITIALIZED;
  const bool doubles = typeA == CUDA_R_64F && typeB == CUDA_R_64F && typeC == CUDA_R_64F;
  const bool compute =
      computeType == CUBLAS_COMPUTE_64F || computeType == CUBLAS_COMPUTE_64F_PEDANTIC;
  if (!doubles || !compute || algorithm != CUBLAS_GEMM_DEFAULT) return CUBLAS_STATUS_NOT_SUPPORTED;
  return cublasDgemm_v2(handle, transA, transB, m, n, k, static_cast<const double*>(alpha),
                        static_cast<const double*>(A), lda, static_cast<const double*>(B), ldb,
                        static_cast<const double*>(beta), static_cast<double*>(C), ldc);
}

cublasStatus_t cublasDgemm_v2(cublasHandle_t handle, cublasOperation_t transA,
                              cublasOperation_t transB, int m, int n, int k, const double* alpha,
                              const double* A, int lda, const double* B, int ldb,
                              const double* beta, double* C, int ldc) {
  if (!zel::isAlive(handle)) return CUBLAS_STATUS_NOT_INITIALIZED;
  if (alpha == nullptr || beta == nullptr || !zel::isOperation(transA) ||
      !zel::isOperation(transB) || m < 0 || n < 0 || k < 0)
    return CUBLAS_STATUS_INVALID_VALUE;
  const zel::Factor left = zel::factor(A, transA, m, k, lda);
  const zel::Factor right = zel::factor(B, transB, k, n, ldb);
  const zel::Matrix<double> result{C, m, n, ldc};
  if (!left.stored.isValid() || !right.stored.isValid() || !result.isValid())
    return CUBLAS_STATUS_INVALID_VALUE;
  zel::multiply(*alpha, left, right, k, *beta, result);
  return CUBLAS_STATUS_SUCCESS;
}
