#include "platform/emulated/libraries/cusparse_descriptors.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/emulated/libraries/live_objects.h"
#include "platform/emulated/runtime/allocations.h"

namespace zel {
namespace {

template <typename T>
cusparseStatus_t add(T** handle, T&& object) {
  *handle = LiveObjects<T>::instance().add(std::forward<T>(object));
  return *handle == nullptr ? CUSPARSE_STATUS_ALLOC_FAILED : CUSPARSE_STATUS_SUCCESS;
}

template <typename T>
cusparseStatus_t remove(const T* handle) {
  const bool removed = LiveObjects<T>::instance().remove(handle);
  return removed ? CUSPARSE_STATUS_SUCCESS : CUSPARSE_STATUS_INVALID_VALUE;
}

// Device memory for count elements; a negative count is none.
template <typename T>
bool isArray(const T* elements, std::int64_t count) {
  return count >= 0 && isDeviceArray(elements, static_cast<std::uint64_t>(count));
}

bool isMatrix(const double* values, std::int64_t rows, std::int64_t cols, std::int64_t ld) {
  if (rows < 0 || cols < 0 || ld < std::max<std::int64_t>(1, rows)) return false;
  if (rows == 0 || cols == 0) return true;
  if (cols - 1 > (std::numeric_limits<std::int64_t>::max() - rows) / ld) return false;
  return isArray(values, (cols - 1) * ld + rows);
}

// Offsets ascend from 0 to nnz, columns are in range.
bool isConsistent(const cusparseSpMatDescr& a) {
  if (a.offsets[0] != 0 || a.offsets[a.rows] != a.nnz) return false;
  const auto inRange = [&a](int column) { return column >= 0 && column < a.cols; };
  return std::is_sorted(a.offsets, a.offsets + a.rows + 1) &&
         std::all_of(a.indices, a.indices + a.nnz, inRange);
}

}  // namespace
}  // namespace zel

const char* cusparseGetErrorString(cusparseStatus_t status) {
  switch (status) {
    case CUSPARSE_STATUS_SUCCESS:
      return "success";
    case CUSPARSE_STATUS_NOT_INITIALIZED:
      return "initialization error";
    case CUSPARSE_STATUS_ALLOC_FAILED:
      return "out of memory";
    case CUSPARSE_STATUS_INVALID_VALUE:
      return "invalid value";
    case CUSPARSE_STATUS_NOT_SUPPORTED:
      return "operation not supported";
  }
  return "unrecognized error code";
}

cusparseStatus_t cusparseCreate(cusparseHandle_t* handle) {
  if (handle == nullptr) return CUSPARSE_STATUS_INVALID_VALUE;
  return zel::add(handle, cusparseContext{});
}

cusparseStatus_t cusparseDestroy(cusparseHandle_t handle) {
  const bool destroyed = zel::LiveObjects<cusparseContext>::instance().remove(handle);
  return destroyed ? CUSPARSE_STATUS_SUCCESS : CUSPARSE_STATUS_NOT_INITIALIZED;
}

cusparseStatus_t cusparseCreateCsr(cusparseSpMatDescr_t* matrix, std::int64_t rows,
                                   std::int64_t cols, std::int64_t nnz, void* rowOffsets,
                                   void* columnIndices, void* values,
                                   cusparseIndexType_t offsetType, cusparseIndexType_t indexType,
                                   cusparseIndexBase_t base, cudaDataType valueType) {
  if (matrix == nullptr || rows < 0 || cols < 0) return CUSPARSE_STATUS_INVALID_VALUE;
  if (offsetType != CUSPARSE_INDEX_32I || indexType != CUSPARSE_INDEX_32I ||
      base != CUSPARSE_INDEX_BASE_ZERO || valueType != CUDA_R_64F)
    return CUSPARSE_STATUS_NOT_SUPPORTED;
  const cusparseSpMatDescr stored{rows,
                                  cols,
                                  nnz,
                                  static_cast<const int*>(rowOffsets),
                                  static_cast<const int*>(columnIndices),
                                  static_cast<const double*>(values)};
  if (!zel::isArray(stored.offsets, rows + 1) || !zel::isArray(stored.indices, nnz) ||
      !zel::isArray(stored.values, nnz) || !zel::isConsistent(stored))
    return CUSPARSE_STATUS_INVALID_VALUE;
  return zel::add(matrix, cusparseSpMatDescr{stored});
}

cusparseStatus_t cusparseDestroySpMat(cusparseSpMatDescr_t matrix) { return zel::remove(matrix); }

cusparseStatus_t cusparseCreateDnVec(cusparseDnVecDescr_t* vector, std::int64_t size, void* values,
                                     cudaDataType valueType) {
  auto* const elements = static_cast<double*>(values);
  if (vector == nullptr || !zel::isArray(elements, size)) return CUSPARSE_STATUS_INVALID_VALUE;
  if (valueType != CUDA_R_64F) return CUSPARSE_STATUS_NOT_SUPPORTED;
  return zel::add(vector, cusparseDnVecDescr{size, elements});
}

cusparseStatus_t cusparseDestroyDnVec(cusparseDnVecDescr_t vector) { return zel::remove(vector); }

cusparseStatus_t cusparseCreateDnMat(cusparseDnMatDescr_t* matrix, std::int64_t rows,
                                     std::int64_t cols, std::int64_t ld, void* values,
                                     cudaDataType valueType, cusparseOrder_t order) {
  auto* const elements = static_cast<double*>(values);
  if (matrix == nullptr || !zel::isMatrix(elements, rows, cols, ld))
    return CUSPARSE_STATUS_INVALID_VALUE;
  if (valueType != CUDA_R_64F || order != CUSPARSE_ORDER_COL) return CUSPARSE_STATUS_NOT_SUPPORTED;
  return zel::add(matrix, cusparseDnMatDescr{rows, cols, ld, elements});
}

cusparseStatus_t cusparseDestroyDnMat(cusparseDnMatDescr_t matrix) { return zel::remove(matrix); }

cusparseStatus_t cusparseCreateSpVec(cusparseSpVecDescr_t* vector, std::int64_t size,
                                     std::int64_t nnz, void* indices, void* values,
                                     cusparseIndexType_t indexType, cusparseIndexBase_t base,
                                     cudaDataType valueType) {
  const auto* const columns = static_cast<const int*>(indices);
  const auto* const elements = static_cast<const double*>(values);
  if (vector == nullptr || size < 0 || nnz > size || !zel::isArray(columns, nnz) ||
      !zel::isArray(elements, nnz))
    return CUSPARSE_STATUS_INVALID_VALUE;
  if (indexType != CUSPARSE_INDEX_32I || base != CUSPARSE_INDEX_BASE_ZERO ||
      valueType != CUDA_R_64F)
    return CUSPARSE_STATUS_NOT_SUPPORTED;
  return zel::add(vector, cusparseSpVecDescr{size, nnz, columns, elements});
}

cusparseStatus_t cusparseDestroySpVec(cusparseSpVecDescr_t vector) { return zel::remove(vector); }
