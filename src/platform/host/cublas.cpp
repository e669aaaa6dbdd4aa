#include <cublas_v2.h>

#include <algorithm>

#include "platform/host/allocations.h"
#include "platform/host/blas.h"
#include "platform/host/dense_product.h"
#include "platform/host/live_objects.h"

struct cublasContext {
  cublasMath_t mathMode = CUBLAS_DEFAULT_MATH;
};

namespace zel::inline ZEL_PLATFORM {
namespace {

bool isOperation(cublasOperation_t operation) {
  return operation == CUBLAS_OP_N || operation == CUBLAS_OP_T;
}

// Device memory for a column-major array whose leading dimension suffices.
bool isMatrix(const double* elements, int rows, int columns, int leading) {
  if (leading < std::max(1, rows)) return false;
  if (rows == 0 || columns == 0) return true;
  const auto before = static_cast<std::uint64_t>(columns - 1) * static_cast<std::uint64_t>(leading);
  return isDeviceArray(elements, before + static_cast<std::uint64_t>(rows));
}

bool isValid(const DenseProduct& p) {
  if (p.m < 0 || p.n < 0 || p.k < 0) return false;
  const bool inputs = isMatrix(p.A, p.transposeA ? p.k : p.m, p.transposeA ? p.m : p.k, p.lda) &&
                      isMatrix(p.B, p.transposeB ? p.n : p.k, p.transposeB ? p.k : p.n, p.ldb);
  return inputs && isMatrix(p.C, p.m, p.n, p.ldc);
}

}  // namespace
}  // namespace zel::inline ZEL_PLATFORM

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
  *mode = handle->mathMode;
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
  if (alpha == nullptr || beta == nullptr || !zel::isOperation(transA) || !zel::isOperation(transB))
    return CUBLAS_STATUS_INVALID_VALUE;
  const zel::DenseProduct product{
      transA == CUBLAS_OP_T, transB == CUBLAS_OP_T, m, n, k, *alpha, A, lda, B, ldb, *beta, C, ldc};
  if (!zel::isValid(product)) return CUBLAS_STATUS_INVALID_VALUE;
  if (!zel::prepareBlas()) return CUBLAS_STATUS_ALLOC_FAILED;
  zel::denseProduct(product);
  return CUBLAS_STATUS_SUCCESS;
}
