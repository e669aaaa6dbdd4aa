// The runtime and driver behaviour that the engine leans on, whichever platform provides it.
#include <cuda.h>
#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/device/device_array.h"

namespace {

TEST(Runtime, OffersADeviceThatComputesInDoublePrecision) {
  int count = 0;
  ASSERT_EQ(cudaGetDeviceCount(&count), cudaSuccess);
  ASSERT_GE(count, 1);
  ASSERT_EQ(cudaSetDevice(0), cudaSuccess);
  int device = -1;
  EXPECT_EQ(cudaGetDevice(&device), cudaSuccess);
  EXPECT_EQ(device, 0);
  cudaDeviceProp properties{};
  ASSERT_EQ(cudaGetDeviceProperties(&properties, 0), cudaSuccess);
  EXPECT_GT(std::strlen(properties.name), 0U);
  EXPECT_GE(properties.major * 10 + properties.minor, 13);
  EXPECT_GE(properties.multiProcessorCount, 1);
  std::size_t free = 0;
  std::size_t total = 0;
  EXPECT_EQ(cuMemGetInfo_v2(&free, &total), CUDA_SUCCESS);
  EXPECT_GT(free, 0U);
  EXPECT_LE(free, total);
}

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

TEST(Memory, CopiesInEveryDirectionAndWithinAnArray) {
  const std::vector<double> values = randomValues(1000, 1);
  const DeviceArray<double> first(values);
  const DeviceArray<double> second(1000);
  ASSERT_EQ(cudaMemcpy(second.data(), first.data(), 8000, cudaMemcpyDeviceToDevice), cudaSuccess);
  EXPECT_EQ(second.values(), values);
  const double replacement[2] = {5, 6};
  ASSERT_EQ(cudaMemcpy(second.data() + 998, replacement, 16, cudaMemcpyDefault), cudaSuccess);
  double back[3] = {};
  ASSERT_EQ(cudaMemcpy(back, second.data() + 997, 24, cudaMemcpyDefault), cudaSuccess);
  EXPECT_EQ(back[0], values[997]);
  EXPECT_EQ(back[1], 5);
  EXPECT_EQ(back[2], 6);
  double onHost[2] = {};
  ASSERT_EQ(cudaMemcpy(onHost, replacement, 16, cudaMemcpyHostToHost), cudaSuccess);
  EXPECT_EQ(onHost[1], 6);
}

TEST(Memory, FillsExactlyTheBytesAskedFor) {
  const DeviceArray<unsigned char> bytes(std::vector<unsigned char>(100, 7));
  ASSERT_EQ(cudaMemset(bytes.data() + 10, 0, 80), cudaSuccess);
  const auto values = bytes.values();
  for (std::size_t i = 0; i < 100; ++i) EXPECT_EQ(values[i], i < 10 || i >= 90 ? 7 : 0) << i;
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

}  // namespace
