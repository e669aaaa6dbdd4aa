#include "base/vectors.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "support/host_vectors.h"

namespace {

using zel::HVector;
using zel::IndexList;
using zel::MemoryKind;
using zelsvm::FilteredVector;
using zelsvm::HostVector;
using zeltest::hostVector;
using zeltest::valuesOf;

const std::vector<double> counting = {1, 2, 3, 4, 5};

TEST(Vectors, CapacityInSteps) {
  for (const auto& [count, capacity] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
           {0, 0}, {1, 512}, {512, 512}, {513, 1024}, {1024, 1024}}) {
    const HostVector<double> vector(count);
    EXPECT_EQ(vector.size(), count);
    EXPECT_EQ(vector.capacity(), capacity);
    EXPECT_EQ(vector.data() == nullptr, count == 0);
  }
}

TEST(Vectors, ResizeKeepsMemoryThatSuffices) {
  HostVector<double> vector = hostVector(counting);
  const double* const memory = vector.data();
  EXPECT_FALSE(vector.resize(512));
  EXPECT_FALSE(vector.resize(0));
  EXPECT_FALSE(vector.resize(5));
  EXPECT_EQ(vector.data(), memory);
  EXPECT_EQ(valuesOf(vector), counting);
  EXPECT_TRUE(vector.resize(513));
  EXPECT_EQ(vector.size(), 513U);
  EXPECT_EQ(vector.capacity(), 1024U);
  vector.release();
  EXPECT_EQ(vector.size() + vector.capacity(), 0U);
  EXPECT_EQ(vector.data(), nullptr);
  EXPECT_TRUE(vector.resize(1)) << "a released vector can be filled again";
}

TEST(Vectors, WrappedMemoryStaysAndIsNeverResized) {
  std::vector<double> memory = counting;
  {
    HVector<double> vector(memory.size(), memory.data());
    EXPECT_TRUE(vector.wrapped());
    EXPECT_EQ(vector.capacity(), 0U);
    EXPECT_EQ(valuesOf(vector), counting);
    for (const std::uint64_t count : {0, 1, 5, 6}) {
      try {
        vector.resize(count);
        ADD_FAILURE() << "resized to " << count;
      } catch (const zel::RuntimeException& error) {
        EXPECT_STREQ(error.what(), "Error in attempts to reallocate wrapped memory.");
      }
    }
    EXPECT_EQ(vector.data(), memory.data());
  }
  EXPECT_EQ(memory, counting);
}

TEST(Vectors, CopiesParts) {
  auto target = hostVector<double>({0, 0, 0, 0, 0});
  target.copyFrom(hostVector(counting), 1, 2, 3);
  EXPECT_EQ(valuesOf(target), (std::vector<double>{0, 3, 4, 5, 0}));
  target.copyFrom(HostVector<double>(), 0, 0, 2);
  EXPECT_EQ(valuesOf(target), (std::vector<double>{0, 3, 4, 5, 0}));
}

TEST(Vectors, MemoryThatIsNotThere) {
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  for (const std::uint64_t count : {most, most - 511, most / 8, std::uint64_t{1} << 50})
    EXPECT_THROW(HostVector<double>{count}, std::bad_alloc) << count;
  try {
    const HostVector<double> aligned(1, MemoryKind::aligned);
    ADD_FAILURE() << "aligned memory was allocated";
  } catch (const zel::RuntimeException& error) {
    EXPECT_STREQ(error.what(), "Unable to allocate memory");
  }
  EXPECT_EQ(HostVector<double>(0, MemoryKind::aligned).data(), nullptr);
}

class FilteredVectors : public testing::Test {
 protected:
  void SetUp() override {
    filter[0] = 2;
    filter[1] = 0;
  }
  IndexList<> filter{2};
  std::vector<double> memory = {1, 2, 3};
};

TEST_F(FilteredVectors, SeeNamedElements) {
  FilteredVector<double> vector(3, memory.data(), filter);
  EXPECT_EQ(vector.size(), 2U);
  EXPECT_EQ(vector.at(0), &memory[2]);
  EXPECT_EQ(std::as_const(vector).at(1), &memory[0]);
  EXPECT_EQ(vector[0], 3);
  vector.set(1, 10);
  EXPECT_EQ(memory, (std::vector<double>{10, 2, 3}));
  HostVector<double>& base = vector;
  base.fill(7);
  EXPECT_EQ(memory, (std::vector<double>{7, 2, 7}));
}

// What stands there is read from where it is to go.
TEST_F(FilteredVectors, Scatter) {
  const auto source = hostVector<double>({10, 20, 30});
  FilteredVector<double> vector(3, memory.data(), filter);
  vector.copyFrom(source, 1, 1, 1);
  EXPECT_EQ(memory, (std::vector<double>{20, 2, 3}));
  vector.copyFrom(source, 0, 0, 2);
  EXPECT_EQ(memory, (std::vector<double>{20, 2, 10}));
  vector.copyFrom(HostVector<double>(), 0, 0, 2);
  EXPECT_EQ(memory, (std::vector<double>{20, 2, 10}));
}

}  // namespace
