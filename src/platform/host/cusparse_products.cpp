#include <algorithm>

#include "platform/host/allocations.h"
#include "platform/host/blas.h"
#include "platform/host/csr_product.h"
#include "platform/host/cusparse_descriptors.h"
#include "platform/host/live_objects.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

// op(A) B with both factors taken as they are.
struct Product {
  const CsrMatrix* A;
  double alpha;
  Columns<const double> B;
  double beta;
  Columns<double> C;
};

cusparseStatus_t checkCall(cusparseHandle_t handle, cudaDataType computeType, const void* alpha,
                           const void* beta) {
  if (!isAlive(handle)) return CUSPARSE_STATUS_NOT_INITIALIZED;
  if (alpha == nullptr || beta == nullptr) return CUSPARSE_STATUS_INVALID_VALUE;
  return computeType == CUDA_R_64F ? CUSPARSE_STATUS_SUCCESS : CUSPARSE_STATUS_NOT_SUPPORTED;
}

double scalar(const void* value) { return *static_cast<const double*>(value); }

// The descriptors of a matrix-vector product, if they are alive and fit together.
cusparseStatus_t describe(Product& product, cusparseSpMatDescr_t A, cusparseDnVecDescr_t x,
                          cusparseDnVecDescr_t y) {
  if (!isAlive(A) || !isAlive(x) || !isAlive(y)) return CUSPARSE_STATUS_INVALID_VALUE;
  const CsrArrays& a = A->matrix.arrays();
  if (x->size != a.cols || y->size != a.rows) return CUSPARSE_STATUS_INVALID_VALUE;
  product.A = &A->matrix;
  product.B = {x->values, std::max<std::int64_t>(1, a.cols), 1};
  product.C = {y->values, std::max<std::int64_t>(1, a.rows), 1};
  return CUSPARSE_STATUS_SUCCESS;
}

cusparseStatus_t describe(Product& product, cusparseSpMatDescr_t A, cusparseDnMatDescr_t B,
                          cusparseDnMatDescr_t C) {
  if (!isAlive(A) || !isAlive(B) || !isAlive(C)) return CUSPARSE_STATUS_INVALID_VALUE;
  const CsrArrays& a = A->matrix.arrays();
  if (B->rows != a.cols || C->rows != a.rows || B->cols != C->cols)
    return CUSPARSE_STATUS_INVALID_VALUE;
  product.A = &A->matrix;
  product.B = {B->values, B->ld, B->cols};
  product.C = {C->values, C->ld, C->cols};
  return CUSPARSE_STATUS_SUCCESS;
}

// Checks everything that the query and the product have in common.
template <typename Dense>
cusparseStatus_t prepare(Product& product, cusparseHandle_t handle, const void* alpha,
                         cusparseSpMatDescr_t A, Dense B, const void* beta, Dense C,
                         cudaDataType computeType) {
  if (const auto status = checkCall(handle, computeType, alpha, beta);
      status != CUSPARSE_STATUS_SUCCESS)
    return status;
  product.alpha = scalar(alpha);
  product.beta = scalar(beta);
  return describe(product, A, B, C);
}

cusparseStatus_t query(const Product& product, std::size_t* bytes) {
  if (bytes == nullptr) return CUSPARSE_STATUS_INVALID_VALUE;
  *bytes = csrProductBuffer(*product.A, product.B.count);
  return CUSPARSE_STATUS_SUCCESS;
}

cusparseStatus_t multiply(const Product& product, void* buffer) {
  if (!Allocations::instance().isDeviceRange(buffer, csrProductBuffer(*product.A, product.B.count)))
    return CUSPARSE_STATUS_INVALID_VALUE;
  if (product.A->dense() != nullptr && !prepareBlas()) return CUSPARSE_STATUS_ALLOC_FAILED;
  csrProduct(*product.A, product.alpha, product.B, product.beta, product.C,
             static_cast<double*>(buffer));
  return CUSPARSE_STATUS_SUCCESS;
}

}  // namespace
}  // namespace zel::inline ZEL_PLATFORM

cusparseStatus_t cusparseSpMV_bufferSize(cusparseHandle_t handle, cusparseOperation_t operation,
                                         const void* alpha, cusparseSpMatDescr_t A,
                                         cusparseDnVecDescr_t x, const void* beta,
                                         cusparseDnVecDescr_t y, cudaDataType computeType,
                                         cusparseSpMVAlg_t, std::size_t* bytes) {
  if (operation != CUSPARSE_OPERATION_NON_TRANSPOSE) return CUSPARSE_STATUS_NOT_SUPPORTED;
  zel::Product product{};
  const auto status = zel::prepare(product, handle, alpha, A, x, beta, y, computeType);
  return status == CUSPARSE_STATUS_SUCCESS ? zel::query(product, bytes) : status;
}

cusparseStatus_t cusparseSpMV(cusparseHandle_t handle, cusparseOperation_t operation,
                              const void* alpha, cusparseSpMatDescr_t A, cusparseDnVecDescr_t x,
                              const void* beta, cusparseDnVecDescr_t y, cudaDataType computeType,
                              cusparseSpMVAlg_t, void* buffer) {
  if (operation != CUSPARSE_OPERATION_NON_TRANSPOSE) return CUSPARSE_STATUS_NOT_SUPPORTED;
  zel::Product product{};
  const auto status = zel::prepare(product, handle, alpha, A, x, beta, y, computeType);
  return status == CUSPARSE_STATUS_SUCCESS ? zel::multiply(product, buffer) : status;
}

cusparseStatus_t cusparseSpMM_bufferSize(cusparseHandle_t handle, cusparseOperation_t operationA,
                                         cusparseOperation_t operationB, const void* alpha,
                                         cusparseSpMatDescr_t A, cusparseDnMatDescr_t B,
                                         const void* beta, cusparseDnMatDescr_t C,
                                         cudaDataType computeType, cusparseSpMMAlg_t,
                                         std::size_t* bytes) {
  if (operationA != CUSPARSE_OPERATION_NON_TRANSPOSE ||
      operationB != CUSPARSE_OPERATION_NON_TRANSPOSE)
    return CUSPARSE_STATUS_NOT_SUPPORTED;
  zel::Product product{};
  const auto status = zel::prepare(product, handle, alpha, A, B, beta, C, computeType);
  return status == CUSPARSE_STATUS_SUCCESS ? zel::query(product, bytes) : status;
}

cusparseStatus_t cusparseSpMM(cusparseHandle_t handle, cusparseOperation_t operationA,
                              cusparseOperation_t operationB, const void* alpha,
                              cusparseSpMatDescr_t A, cusparseDnMatDescr_t B, const void* beta,
                              cusparseDnMatDescr_t C, cudaDataType computeType, cusparseSpMMAlg_t,
                              void* buffer) {
  if (operationA != CUSPARSE_OPERATION_NON_TRANSPOSE ||
      operationB != CUSPARSE_OPERATION_NON_TRANSPOSE)
    return CUSPARSE_STATUS_NOT_SUPPORTED;
  zel::Product product{};
  const auto status = zel::prepare(product, handle, alpha, A, B, beta, C, computeType);
  return status == CUSPARSE_STATUS_SUCCESS ? zel::multiply(product, buffer) : status;
}

cusparseStatus_t cusparseScatter(cusparseHandle_t handle, cusparseSpVecDescr_t x,
                                 cusparseDnVecDescr_t y) {
  if (!zel::isAlive(handle)) return CUSPARSE_STATUS_NOT_INITIALIZED;
  if (!zel::isAlive(x) || !zel::isAlive(y) || x->size != y->size)
    return CUSPARSE_STATUS_INVALID_VALUE;
  const bool fits = std::all_of(x->indices, x->indices + x->nnz,
                                [x](int index) { return index >= 0 && index < x->size; });
  if (!fits) return CUSPARSE_STATUS_INVALID_VALUE;
  for (std::int64_t k = 0; k < x->nnz; ++k) y->values[x->indices[k]] = x->values[k];
  return CUSPARSE_STATUS_SUCCESS;
}
