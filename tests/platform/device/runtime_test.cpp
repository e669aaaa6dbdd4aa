// The runtime and driver behaviour that the engine leans on, whichever platform provides it.
#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <vector>

#include "base/errors.h"
#include "platform/cuda/runtime/answer.h"
#include "platform/device/device_array.h"

namespace {

TEST(Runtime, RefusesDevicesThatDoNotExistAndKeepsTheErrorUntilItIsRead) {
  int count = 0;
  ASSERT_EQ(cudaGetDeviceCount(&count), cudaSuccess);
  for (const int device : {-1, count}) {
    EXPECT_EQ(cudaSetDevice(device), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  }
  cudaDeviceProp properties{};
  EXPECT_EQ(cudaGetDeviceProperties(&properties, count), cudaErrorInvalidDevice);
  int current = -1;
  EXPECT_EQ(cudaGetDevice(&current), cudaSuccess);
  EXPECT_EQ(current, 0);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidDevice);
}

TEST(Memory, DoesNothingForZeroBytes) {
  void* memory = &memory;
  EXPECT_EQ(cudaMalloc(&memory, 0), cudaSuccess);
  EXPECT_EQ(memory, nullptr);
  EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
  EXPECT_EQ(cudaFreeHost(nullptr), cudaSuccess);
  EXPECT_EQ(cudaMemcpy(nullptr, nullptr, 0, cudaMemcpyHostToDevice), cudaSuccess);
  EXPECT_EQ(cudaMemset(nullptr, 0, 0), cudaSuccess);
}

TEST(Memory, AnswersAbsurdSizesWithOutOfMemoryAndGoesOn) {
  void* memory = nullptr;
  for (const std::size_t bytes : {std::size_t{1} << 50, std::size_t{1} << 62}) {
    EXPECT_EQ(cudaMalloc(&memory, bytes), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaHostAlloc(&memory, bytes, 0), cudaErrorMemoryAllocation);
    EXPECT_EQ(memory, nullptr);
  }
  EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
  const DeviceArray<double> usable({1, 2});
  EXPECT_EQ(usable.values()[1], 2);
}

TEST(Answer, ThatNobodyGivesIsAnError) {
  zel::Answer<double> answer;
  answer.nextTicket();
  EXPECT_THROW(answer.await(), zel::RuntimeException);
}

}  // namespace
