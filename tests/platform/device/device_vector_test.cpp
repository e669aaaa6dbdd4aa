// Arrays on the device and their textures.
#include "platform/cuda/runtime/device_vector.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "platform/device/device_vectors.h"
#include "support/allocation_fault.h"

namespace {

using zel::DeviceVector;
using zeltest::valuesOf;
using Values = std::vector<double>;

const Values counting = {1, 2, 3, 4, 5};

TEST(DeviceVectors, CapacityInSteps) {
  for (const auto& [count, capacity] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
           {0, 0}, {1, 512}, {512, 512}, {513, 1024}, {1024, 1024}}) {
    const DeviceVector<char2> vector(count);
    EXPECT_EQ(vector.size(), count);
    EXPECT_EQ(vector.capacity(), capacity);
    EXPECT_EQ(vector.data() == nullptr, count == 0);
  }
}

TEST(DeviceVectors, ResizeKeepsMemoryThatSuffices) {
  DeviceVector<double> vector{std::span<const double>(counting)};
  const double* const memory = vector.data();
  EXPECT_FALSE(vector.resize(512));
  EXPECT_FALSE(vector.resize(5));
  EXPECT_EQ(vector.data(), memory);
  EXPECT_EQ(valuesOf(vector), counting);
  EXPECT_TRUE(vector.assign(Values(513, 2)));
  EXPECT_EQ(valuesOf(vector), Values(513, 2));
  vector.release();
  EXPECT_EQ(vector.size() + vector.capacity(), 0U);
  EXPECT_EQ(vector.data(), nullptr);
}

TEST(DeviceVectors, CopyAnyStretch) {
  DeviceVector<double> vector{std::span<const double>(counting)};
  DeviceVector<double> other(5);
  other.clear();
  other.copyFrom(vector, 1, 2, 3);
  EXPECT_EQ(valuesOf(other), (Values{0, 3, 4, 5, 0}));
  other.upload(Values{7, 8}, 3);
  EXPECT_EQ(valuesOf(other), (Values{0, 3, 4, 7, 8}));
  Values two(2);
  other.download(two, 2);
  EXPECT_EQ(two, (Values{4, 7}));
  other.upload({});
  other.download({});
}

TEST(DeviceVectors, MemoryThatIsNotThereIsTheRuntimesError) {
  DeviceVector<double> vector(512);
  const auto expectFailure = [&](std::uint64_t count) {
    try {
      vector.resize(count);
      ADD_FAILURE() << count << " were allocated";
    } catch (const zel::RuntimeException& error) {
      EXPECT_TRUE(std::string(error.what())
                      .ends_with("): zelSafeCall: CUDA runtime error - out of memory.\n"))
          << error.what();
    }
    EXPECT_EQ(vector.size() + vector.capacity(), 0U) << "empty, not half made";
  };
  {
    const zeltest::AllocationFault fault(1);
    expectFailure(513);
  }
  expectFailure(std::numeric_limits<std::uint64_t>::max());
  expectFailure(std::uint64_t{1} << 50);
  EXPECT_TRUE(vector.resize(513));
}

}  // namespace
