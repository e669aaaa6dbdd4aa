// How the device in software runs device code, and what it does not let pass.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/cuda/runtime/texture.h"
#include "platform/device/device_array.h"
#include "platform/emulated/execution/race_model.h"

namespace {

using zel::device::lastFaults;

template <typename... Parameters>
cudaError_t run(void (*kernel)(Parameters...), const dim3& grid, unsigned block, std::size_t shared,
                std::type_identity_t<Parameters>... arguments) {
  return zel_platform::launchKernel(kernel, grid, dim3{block}, shared, arguments...);
}

testing::AssertionResult faultWas(cudaError_t error, const std::string& text) {
  if (error == cudaErrorLaunchFailure && lastFaults().find(text) != std::string::npos)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << error << ": " << lastFaults();
}

__global__ void countVisits(unsigned* visits) {
  const unsigned block = blockIdx.y * gridDim.x + blockIdx.x;
  visits[block * blockDim.x + threadIdx.x] += 1;
}

TEST(Launches, RunEveryThreadOfTheGridOnce) {
  const std::vector<unsigned> before(3 * 5 * 70, 1);
  const DeviceArray<unsigned> visits(before);
  ASSERT_EQ(run(countVisits, {3, 5}, 70, 0, visits.data()), cudaSuccess);
  EXPECT_EQ(visits.values(), std::vector<unsigned>(before.size(), 2));
}

TEST(Launches, RefuseShapesThatNoDeviceTakes) {
  const DeviceArray<unsigned> visits(1);
  for (const auto& [grid, block, shared] : {std::tuple{dim3{0}, 32U, 0U},
                                            {dim3{1}, 0U, 0U},
                                            {dim3{1}, 1025U, 0U},
                                            {dim3{1, 65536}, 1U, 0U},
                                            {dim3{1}, 1U, 49153U}})
    EXPECT_EQ(run(countVisits, grid, block, shared, visits.data()), cudaErrorInvalidConfiguration);
}

__global__ void takeNumbers(unsigned* numbers, unsigned* counter) {
  __syncthreads();
  numbers[blockIdx.x * blockDim.x + threadIdx.x] = atomicInc(counter, 1000);
}

TEST(Launches, OrderBlocksAndThreadsByTheSeed) {
  const auto order = [](std::uint64_t seed) {
    const DeviceArray<unsigned> numbers(96);
    const DeviceArray<unsigned> counter(std::vector<unsigned>{0});
    zel::device::setNextSeed(seed);
    EXPECT_EQ(run(takeNumbers, {3}, 32, 0, numbers.data(), counter.data()), cudaSuccess);
    EXPECT_EQ(counter.values()[0], 96U);
    return numbers.values();
  };
  const auto first = order(5);
  std::vector<unsigned> sorted = first;
  std::sort(sorted.begin(), sorted.end());
  for (unsigned k = 0; k < 96; ++k) EXPECT_EQ(sorted[k], k);
  EXPECT_NE(first, sorted);
  EXPECT_NE(first, order(6));
  if (!zel::device::racesAreSought) {
    EXPECT_EQ(first, order(5));
  }
}

__global__ void showShared(double* shown, bool dynamic) {
  ZEL_DYNAMIC_SHARED(double, added);
  __shared__ double own[2];
  shown[blockIdx.x] = dynamic ? added[1] : own[1];
  own[1] = added[1] = 5;
}

// What was not written reads as a number that spoils any result, and not as what another block
// left.
TEST(Launches, PoisonSharedMemory) {
  if (zel::device::racesAreSought) GTEST_SKIP() << "left to the race detector";
  std::set<std::string> seen;
  for (const bool dynamic : {false, true})
    for (int repeat = 0; repeat < 6; ++repeat) {
      const DeviceArray<double> shown(4);
      ASSERT_EQ(run(showShared, {4}, 1, 16, shown.data(), dynamic), cudaSuccess);
      for (const double value : shown.values()) {
        EXPECT_TRUE(std::isnan(value) || std::fabs(value) > 1e300) << value;
        seen.insert(std::isnan(value) ? "none" : value > 0 ? "large" : "small");
      }
    }
  EXPECT_EQ(seen.size(), 3U);
  const DeviceArray<double> fresh(3);
  for (const double value : fresh.values())
    EXPECT_TRUE(std::isnan(value) || std::fabs(value) > 1e300) << value;
}

__global__ void writeAt(double* memory, long long place) { memory[place] = 1; }

__global__ void writeShared(long long place) {
  ZEL_DYNAMIC_SHARED(double, added);
  added[place] = 1;
}

TEST(Launches, FindWritesBesideMemory) {
  const DeviceArray<double> memory(8);
  EXPECT_EQ(run(writeAt, {1}, 1, 0, memory.data(), 7), cudaSuccess);
  for (const long long place : {-1, -100, 8, 100}) {
    EXPECT_TRUE(faultWas(run(writeAt, {1}, 1, 0, memory.data(), place), "beside an allocation"));
    EXPECT_EQ(run(writeAt, {1}, 1, 0, memory.data(), 0), cudaSuccess) << "reported once";
  }
  EXPECT_EQ(run(writeShared, {1}, 1, 64, 7), cudaSuccess);
  for (const long long place : {-1, 8, 100})
    EXPECT_TRUE(faultWas(run(writeShared, {1}, 1, 64, place), "beside the dynamic shared memory"));
}

__global__ void fetchAt(cudaTextureObject_t texture, int index, double* memory, bool write) {
  if (write) memory[3] += 1;
  const int2 halves = tex1Dfetch<int2>(texture, index);
  memory[0] = __hiloint2double(halves.y, halves.x);
}

__global__ void fetchBytes(cudaTextureObject_t texture, signed char* out) {
  *out = tex1Dfetch<char2>(texture, 0).x;
}

TEST(Launches, FindBadFetches) {
  zel::DeviceVector<double> vector{std::span<const double>(std::vector<double>{1, 2, 3, 4})};
  cudaTextureObject_t handle = 0;
  {
    const zel::LinearTexture<double> texture(vector);
    handle = texture.handle();
    EXPECT_EQ(run(fetchAt, {1}, 1, 0, handle, 3, vector.data(), false), cudaSuccess);
    std::vector<double> read(1);
    vector.download(read);
    EXPECT_EQ(read[0], 4);
    EXPECT_TRUE(faultWas(run(fetchAt, {1}, 1, 0, handle, 3, vector.data(), true),
                         "fetched what the launch has written, texel 3"));
    EXPECT_TRUE(faultWas(run(fetchAt, {1}, 1, 0, handle, 4, vector.data(), false),
                         "fetched beyond a texture, texel 4"));
    EXPECT_TRUE(faultWas(run(fetchAt, {1}, 1, 0, handle, -1, vector.data(), false),
                         "fetched beyond a texture, texel -1"));
    const DeviceArray<signed char> byte(1);
    EXPECT_TRUE(faultWas(run(fetchBytes, {1}, 1, 0, handle, byte.data()), "of another type"));
  }
  EXPECT_TRUE(faultWas(run(fetchAt, {1}, 1, 0, handle, 0, vector.data(), false), "that is gone"));
}

__global__ void waitApart(bool apart) {
  if (apart && threadIdx.x == 7)
    __syncthreads();
  else
    __syncthreads();
}

__global__ void leaveEarly() {
  if (threadIdx.x >= 7) return;
  __syncthreads();
}

TEST(Launches, FindThreadsAtDifferentBarriers) {
  EXPECT_TRUE(faultWas(run(waitApart, {1}, 32, 0, true), "wait at different barriers"));
  EXPECT_EQ(run(waitApart, {1}, 32, 0, false), cudaSuccess);
  EXPECT_EQ(run(leaveEarly, {1}, 32, 0), cudaSuccess) << "threads that ended are not waited for";
}

}  // namespace
