// cuSPARSE as far as the engine calls it: CSR products and the scatter of a sparse vector.
#pragma once

#include <cuda_runtime.h>
#include <library_types.h>

#include <cstdint>

enum cusparseStatus_t : int {
  CUSPARSE_STATUS_SUCCESS = 0,
  CUSPARSE_STATUS_NOT_INITIALIZED = 1,
  CUSPARSE_STATUS_ALLOC_FAILED = 2,
  CUSPARSE_STATUS_INVALID_VALUE = 3,
  CUSPARSE_STATUS_NOT_SUPPORTED = 10,
};

enum cusparseOperation_t : int {
  CUSPARSE_OPERATION_NON_TRANSPOSE = 0,
  CUSPARSE_OPERATION_TRANSPOSE = 1
};
enum cusparseIndexType_t : int { CUSPARSE_INDEX_32I = 2 };
enum cusparseIndexBase_t : int { CUSPARSE_INDEX_BASE_ZERO = 0 };
enum cusparseOrder_t : int { CUSPARSE_ORDER_COL = 1 };
// The algorithms that give equal bits in every run.
enum cusparseSpMVAlg_t : int { CUSPARSE_SPMV_CSR_ALG2 = 3 };
enum cusparseSpMMAlg_t : int { CUSPARSE_SPMM_CSR_ALG3 = 12 };

using cusparseHandle_t = struct cusparseContext*;
using cusparseSpMatDescr_t = struct cusparseSpMatDescr*;
using cusparseDnVecDescr_t = struct cusparseDnVecDescr*;
using cusparseDnMatDescr_t = struct cusparseDnMatDescr*;
using cusparseSpVecDescr_t = struct cusparseSpVecDescr*;

const char* cusparseGetErrorString(cusparseStatus_t status);
cusparseStatus_t cusparseCreate(cusparseHandle_t* handle);
cusparseStatus_t cusparseDestroy(cusparseHandle_t handle);

// The arrays are read when the descriptor is made and must not change while it lives.
cusparseStatus_t cusparseCreateCsr(cusparseSpMatDescr_t* matrix, std::int64_t rows,
                                   std::int64_t cols, std::int64_t nnz, void* rowOffsets,
                                   void* columnIndices, void* values,
                                   cusparseIndexType_t offsetType, cusparseIndexType_t indexType,
                                   cusparseIndexBase_t base, cudaDataType valueType);
cusparseStatus_t cusparseDestroySpMat(cusparseSpMatDescr_t matrix);

cusparseStatus_t cusparseCreateDnVec(cusparseDnVecDescr_t* vector, std::int64_t size, void* values,
                                     cudaDataType valueType);
cusparseStatus_t cusparseDestroyDnVec(cusparseDnVecDescr_t vector);
cusparseStatus_t cusparseCreateDnMat(cusparseDnMatDescr_t* matrix, std::int64_t rows,
                                     std::int64_t cols, std::int64_t ld, void* values,
                                     cudaDataType valueType, cusparseOrder_t order);
cusparseStatus_t cusparseDestroyDnMat(cusparseDnMatDescr_t matrix);
cusparseStatus_t cusparseCreateSpVec(cusparseSpVecDescr_t* vector, std::int64_t size,
                                     std::int64_t nnz, void* indices, void* values,
                                     cusparseIndexType_t indexType, cusparseIndexBase_t base,
                                     cudaDataType valueType);
cusparseStatus_t cusparseDestroySpVec(cusparseSpVecDescr_t vector);

cusparseStatus_t cusparseSpMV_bufferSize(cusparseHandle_t handle, cusparseOperation_t operation,
                                         const void* alpha, cusparseSpMatDescr_t A,
                                         cusparseDnVecDescr_t x, const void* beta,
                                         cusparseDnVecDescr_t y, cudaDataType computeType,
                                         cusparseSpMVAlg_t algorithm, std::size_t* bytes);
// y = alpha A x + beta y; a beta of 0 never reads y.
cusparseStatus_t cusparseSpMV(cusparseHandle_t handle, cusparseOperation_t operation,
                              const void* alpha, cusparseSpMatDescr_t A, cusparseDnVecDescr_t x,
                              const void* beta, cusparseDnVecDescr_t y, cudaDataType computeType,
                              cusparseSpMVAlg_t algorithm, void* buffer);
cusparseStatus_t cusparseSpMM_bufferSize(cusparseHandle_t handle, cusparseOperation_t operationA,
                                         cusparseOperation_t operationB, const void* alpha,
                                         cusparseSpMatDescr_t A, cusparseDnMatDescr_t B,
                                         const void* beta, cusparseDnMatDescr_t C,
                                         cudaDataType computeType, cusparseSpMMAlg_t algorithm,
                                         std::size_t* bytes);
// C = alpha A B + beta C; a beta of 0 never reads C.
cusparseStatus_t cusparseSpMM(cusparseHandle_t handle, cusparseOperation_t operationA,
                              cusparseOperation_t operationB, const void* alpha,
                              cusparseSpMatDescr_t A, cusparseDnMatDescr_t B, const void* beta,
                              cusparseDnMatDescr_t C, cudaDataType computeType,
                              cusparseSpMMAlg_t algorithm, void* buffer);
// y[index[k]] = value[k] for every stored entry; the other entries of y stay as they are.
cusparseStatus_t cusparseScatter(cusparseHandle_t handle, cusparseSpVecDescr_t x,
                                 cusparseDnVecDescr_t y);
