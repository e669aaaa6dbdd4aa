// Where the device in software refuses what the vendor's might not notice.
#include <cublas_v2.h>
#include <cusparse.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/device/device_array.h"
#include "platform/emulated/runtime/textures.h"

namespace {

TEST(EmulatedMemory, RefusesWhatIsNotDeviceMemory) {
  const DeviceArray<double> array({1, 2, 3, 4});
  std::vector<double> host(8);
  double* pinned = nullptr;
  ASSERT_EQ(cudaHostAlloc(&pinned, 64, 0), cudaSuccess);
  for (double* wrong : {host.data(), pinned, static_cast<double*>(nullptr), array.data() + 1}) {
    EXPECT_EQ(cudaMemcpy(wrong, host.data(), 32, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(host.data(), wrong, 32, cudaMemcpyDeviceToHost), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(array.data(), wrong, 32, cudaMemcpyDeviceToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemset(wrong, 0, 32), cudaErrorInvalidValue);
    if (wrong != nullptr) {
      EXPECT_EQ(cudaFree(wrong), cudaErrorInvalidValue);
    }
  }
  EXPECT_EQ(cudaMemcpy(host.data(), array.data(), 40, cudaMemcpyDefault), cudaErrorInvalidValue);
  EXPECT_EQ(cudaFreeHost(array.data()), cudaErrorInvalidValue);
  EXPECT_EQ(array.values(), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(cudaFreeHost(pinned), cudaSuccess);
  EXPECT_EQ(cudaFreeHost(pinned), cudaErrorInvalidValue);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
}

TEST(EmulatedMemory, TellsManyAllocationsApart) {
  std::vector<unsigned char*> arrays(200);
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    ASSERT_EQ(cudaMalloc(&arrays[i], i + 1), cudaSuccess);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arrays[i]) % 64, 0U);
  }
  for (std::size_t i = 0; i < arrays.size(); i += 2) EXPECT_EQ(cudaFree(arrays[i]), cudaSuccess);
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    const bool alive = i % 2 == 1;
    EXPECT_EQ(cudaMemset(arrays[i], 0, i + 1), alive ? cudaSuccess : cudaErrorInvalidValue) << i;
    EXPECT_EQ(cudaMemset(arrays[i], 0, i + 2), cudaErrorInvalidValue) << i;
    EXPECT_EQ(cudaFree(arrays[i]), alive ? cudaSuccess : cudaErrorInvalidValue) << i;
  }
}

double symbol[4];

TEST(EmulatedMemory, CopiesToSymbolsWithinTheirSize) {
  const double values[2] = {1, 2};
  EXPECT_EQ(cudaMemcpyToSymbol(symbol, values, 16, 8), cudaSuccess);
  EXPECT_EQ(symbol[0], 0);
  EXPECT_EQ(symbol[2], 2);
  EXPECT_EQ(cudaMemcpyToSymbol(symbol, values, 16, 24), cudaErrorInvalidValue);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
}

const unsigned char* memoryOf(cudaTextureObject_t texture) {
  for (const zel::TextureView& view : zel::textureViews())
    if (view.handle == texture) return view.memory;
  return nullptr;
}

TEST(EmulatedTexture, SeesItsMemoryAsLongAsBothLive) {
  double* memory = nullptr;
  ASSERT_EQ(cudaMalloc(&memory, 800), cudaSuccess);
  cudaResourceDesc resource{};
  resource.resType = cudaResourceTypeLinear;
  resource.res.linear = {memory, {32, 32, 0, 0, cudaChannelFormatKindSigned}, 800};
  const cudaTextureDesc description{};
  cudaTextureObject_t texture = 0;
  ASSERT_EQ(cudaCreateTextureObject(&texture, &resource, &description, nullptr), cudaSuccess);
  EXPECT_EQ(memoryOf(texture), reinterpret_cast<unsigned char*>(memory));
  EXPECT_EQ(cudaDestroyTextureObject(texture), cudaSuccess);
  EXPECT_EQ(memoryOf(texture), nullptr);
  cudaTextureObject_t next = 0;
  ASSERT_EQ(cudaCreateTextureObject(&next, &resource, &description, nullptr), cudaSuccess);
  EXPECT_EQ(memoryOf(texture), nullptr);  // also when its place is taken again
  EXPECT_EQ(cudaDestroyTextureObject(texture), cudaErrorInvalidValue);
  EXPECT_EQ(cudaDestroyTextureObject(0), cudaErrorInvalidValue);
  EXPECT_EQ(cudaFree(memory), cudaSuccess);
  EXPECT_EQ(memoryOf(next), nullptr);
  EXPECT_EQ(cudaDestroyTextureObject(next), cudaSuccess);
  EXPECT_EQ(cudaCreateTextureObject(&texture, &resource, &description, nullptr),
            cudaErrorInvalidValue);
}

TEST(EmulatedBlas, RefusesHostMemoryForeignTypesAndDeadHandles) {
  cublasHandle_t handle = nullptr;
  ASSERT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS);
  const DeviceArray<double> array({1, 2, 3, 4});
  double host[4] = {};
  const double one = 1;
  const auto product = [&](const double* A, double* C, cudaDataType type) {
    return cublasGemmEx(handle, CUBLAS_OP_T, CUBLAS_OP_N, 2, 1, 2, &one, A, type, 2, array.data(),
                        CUDA_R_64F, 2, &one, C, CUDA_R_64F, 2, CUBLAS_COMPUTE_64F,
                        CUBLAS_GEMM_DEFAULT);
  };
  EXPECT_EQ(product(host, array.data(), CUDA_R_64F), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(array.data(), host, CUDA_R_64F), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(array.data() + 1, array.data(), CUDA_R_64F), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(array.data(), array.data(), static_cast<cudaDataType>(0)),
            CUBLAS_STATUS_NOT_SUPPORTED);
  ASSERT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS);
  EXPECT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_NOT_INITIALIZED);
  EXPECT_EQ(product(array.data(), array.data(), CUDA_R_64F), CUBLAS_STATUS_NOT_INITIALIZED);
}

TEST(EmulatedSparse, RefusesBrokenMatricesAndWrongSizes) {
  cusparseHandle_t handle = nullptr;
  ASSERT_EQ(cusparseCreate(&handle), CUSPARSE_STATUS_SUCCESS);
  const DeviceArray<double> values({1, 2, 3});
  cusparseSpMatDescr_t matrix = nullptr;
  const auto create = [&](const std::vector<int>& offsets, const std::vector<int>& indices) {
    const DeviceArray<int> deviceOffsets(offsets);
    const DeviceArray<int> deviceIndices(indices);
    return cusparseCreateCsr(&matrix, 2, 3, 3, deviceOffsets.data(), deviceIndices.data(),
                             values.data(), CUSPARSE_INDEX_32I, CUSPARSE_INDEX_32I,
                             CUSPARSE_INDEX_BASE_ZERO, CUDA_R_64F);
  };
  EXPECT_EQ(create({0, 1, 2}, {0, 1, 2}), CUSPARSE_STATUS_INVALID_VALUE);   // values left over
  EXPECT_EQ(create({1, 2, 3}, {0, 1, 2}), CUSPARSE_STATUS_INVALID_VALUE);   // does not begin at 0
  EXPECT_EQ(create({0, 4, 3}, {0, 1, 2}), CUSPARSE_STATUS_INVALID_VALUE);   // goes back
  EXPECT_EQ(create({0, 1, 3}, {0, 3, 2}), CUSPARSE_STATUS_INVALID_VALUE);   // no such column
  EXPECT_EQ(create({0, 1, 3}, {0, -1, 2}), CUSPARSE_STATUS_INVALID_VALUE);  // no such column
  EXPECT_EQ(create({0, 1, 3}, {0, 1}), CUSPARSE_STATUS_INVALID_VALUE);      // indices too short
  ASSERT_EQ(create({0, 1, 3}, {0, 1, 2}), CUSPARSE_STATUS_SUCCESS);

  cusparseDnVecDescr_t three = nullptr;
  ASSERT_EQ(cusparseCreateDnVec(&three, 3, values.data(), CUDA_R_64F), CUSPARSE_STATUS_SUCCESS);
  cusparseDnVecDescr_t tooLong = nullptr;
  EXPECT_EQ(cusparseCreateDnVec(&tooLong, 4, values.data(), CUDA_R_64F),
            CUSPARSE_STATUS_INVALID_VALUE);
  const double one = 1;
  const DeviceArray<double> buffer(64);
  const auto product = [&](cusparseOperation_t operation) {
    return cusparseSpMV(handle, operation, &one, matrix, three, &one, three, CUDA_R_64F,
                        CUSPARSE_SPMV_CSR_ALG2, buffer.data());
  };
  EXPECT_EQ(product(CUSPARSE_OPERATION_NON_TRANSPOSE),
            CUSPARSE_STATUS_INVALID_VALUE);  // y too long
  EXPECT_EQ(product(CUSPARSE_OPERATION_TRANSPOSE), CUSPARSE_STATUS_NOT_SUPPORTED);
  EXPECT_EQ(cusparseDestroySpMat(matrix), CUSPARSE_STATUS_SUCCESS);
  EXPECT_EQ(cusparseDestroySpMat(matrix), CUSPARSE_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(CUSPARSE_OPERATION_NON_TRANSPOSE), CUSPARSE_STATUS_INVALID_VALUE);
  EXPECT_EQ(cusparseDestroyDnVec(three), CUSPARSE_STATUS_SUCCESS);
  EXPECT_EQ(cusparseDestroy(handle), CUSPARSE_STATUS_SUCCESS);
  EXPECT_EQ(product(CUSPARSE_OPERATION_NON_TRANSPOSE), CUSPARSE_STATUS_NOT_INITIALIZED);
}

}  // namespace
