#include <algorithm>
#include <cstring>

#include "platform/emulated/libraries/cusparse_descriptors.h"
#include "platform/emulated/libraries/live_objects.h"
#include "platform/emulated/runtime/allocations.h"

namespace zel {
namespace {

struct Product {
  const cusparseSpMatDescr* A;
  double alpha;
  cusparseDnMatDescr B;
  double beta;
  cusparseDnMatDescr C;
};

// A work buffer that no device may do without.
constexpr std::size_t bufferBytesPerColumn = 96;

std::size_t bufferBytes(const Product& product) {
  return bufferBytesPerColumn * static_cast<std::size_t>(product.B.cols);
}

cusparseDnMatDescr column(const cusparseDnVecDescr& vector) {
  return {vector.size, 1, std::max<std::int64_t>(1, vector.size), vector.values};
}
const cusparseDnMatDescr& column(const cusparseDnMatDescr& matrix) { return matrix; }

// The factors as they are, if they are alive and fit together.
template <typename Dense>
cusparseStatus_t prepare(Product& product, cusparseHandle_t handle, const void* alpha,
                         cusparseSpMatDescr_t A, Dense B, const void* beta, Dense C,
                         cudaDataType computeType) {
  if (!isAlive(handle)) return CUSPARSE_STATUS_NOT_INITIALIZED;
  if (alpha == nullptr || beta == nullptr || !isAlive(A) || !isAlive(B) || !isAlive(C))
    return CUSPARSE_STATUS_INVALID_VALUE;
  if (computeType != CUDA_R_64F) return CUSPARSE_STATUS_NOT_SUPPORTED;
  product = {A, *static_cast<const double*>(alpha), column(*B), *static_cast<const double*>(beta),
             column(*C)};
  const bool fit =
      product.B.rows == A->cols && product.C.rows == A->rows && product.B.cols == product.C.cols;
  return fit ? CUSPARSE_STATUS_SUCCESS : CUSPARSE_STATUS_INVALID_VALUE;
}

cusparseStatus_t query(const Product& product, std::size_t* bytes) {
  if (bytes == nullptr) return CUSPARSE_STATUS_INVALID_VALUE;
  *bytes = bufferBytes(product);
  return CUSPARSE_STATUS_SUCCESS;
}

cusparseStatus_t multiply(const Product& product, void* buffer) {
  const auto& [A, alpha, B, beta, C] = product;
  if (!Allocations::instance().isDeviceRange(buffer, bufferBytes(product)))
    return CUSPARSE_STATUS_INVALID_VALUE;
  if (buffer != nullptr) std::memset(buffer, 0xFF, bufferBytes(product));
  for (std::int64_t j = 0; j < B.cols; ++j)
    for (std::int64_t i = 0; i < A->rows; ++i) {
      double sum = 0;
      for (int p = A->offsets[i]; p < A->offsets[i + 1]; ++p)
        sum += A->values[p] * B.values[j * B.ld + A->indices[p]];
      double& result = C.values[j * C.ld + i];
      result = beta == 0 ? alpha * sum : alpha * sum + beta * result;
    }
  return CUSPARSE_STATUS_SUCCESS;
}

}  // namespace
}  // namespace zel

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
