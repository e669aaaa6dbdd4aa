// cuBLAS as far as the engine calls it: column-major dense products.
#pragma once

#include <cuda_runtime.h>
#include <library_types.h>

enum cublasStatus_t : int {
  CUBLAS_STATUS_SUCCESS = 0,
  CUBLAS_STATUS_NOT_INITIALIZED = 1,
  CUBLAS_STATUS_ALLOC_FAILED = 3,
  CUBLAS_STATUS_INVALID_VALUE = 7,
  CUBLAS_STATUS_NOT_SUPPORTED = 15,
};

enum cublasOperation_t : int { CUBLAS_OP_N = 0, CUBLAS_OP_T = 1 };
enum cublasMath_t : int { CUBLAS_DEFAULT_MATH = 0, CUBLAS_PEDANTIC_MATH = 2 };
enum cublasComputeType_t : int { CUBLAS_COMPUTE_64F = 70, CUBLAS_COMPUTE_64F_PEDANTIC = 71 };
enum cublasGemmAlgo_t : int { CUBLAS_GEMM_DEFAULT = -1 };

using cublasHandle_t = struct cublasContext*;

cublasStatus_t cublasCreate_v2(cublasHandle_t* handle);
cublasStatus_t cublasDestroy_v2(cublasHandle_t handle);
cublasStatus_t cublasGetMathMode(cublasHandle_t handle, cublasMath_t* mode);

// C = alpha op(A) op(B) + beta C with op(A) m x k, op(B) k x n, C m x n; a beta of 0 never reads C.
cublasStatus_t cublasGemmEx(cublasHandle_t handle, cublasOperation_t transA,
                            cublasOperation_t transB, int m, int n, int k, const void* alpha,
                            const void* A, cudaDataType_t typeA, int lda, const void* B,
                            cudaDataType_t typeB, int ldb, const void* beta, void* C,
                            cudaDataType_t typeC, int ldc, cublasComputeType_t computeType,
                            cublasGemmAlgo_t algorithm);
cublasStatus_t cublasDgemm_v2(cublasHandle_t handle, cublasOperation_t transA,
                              cublasOperation_t transB, int m, int n, int k, const double* alpha,
                              const double* A, int lda, const double* B, int ldb,
                              const double* beta, double* C, int ldc);
