#include <gtest/gtest.h>

#include "zeldplus/inc/zeldev.h"

namespace {

TEST(Device, DoublePrecisionFromCapability13) {
  EXPECT_FALSE(zel::hasDoublePrecision(0, 9));
  EXPECT_FALSE(zel::hasDoublePrecision(1, 0));
  EXPECT_FALSE(zel::hasDoublePrecision(1, 2));
  EXPECT_TRUE(zel::hasDoublePrecision(1, 3));
  EXPECT_TRUE(zel::hasDoublePrecision(2, 0));
  EXPECT_NO_THROW(zel::checkDoublePrecision());
}

TEST(Device, FreeMemoryIsPartOfTheTotal) {
  int device = -1;
  cudaDeviceProp properties{};
  zel::zelSafeCall(cudaGetDevice(&device));
  zel::zelSafeCall(cudaGetDeviceProperties(&properties, device));
  EXPECT_GT(zel::freeDeviceMemory(), std::uint64_t{1} << 20);
  EXPECT_LE(zel::freeDeviceMemory(), properties.totalGlobalMem);
  EXPECT_EQ(zel::multiProcessorCount(), properties.multiProcessorCount);
  EXPECT_GT(zel::multiProcessorCount(), 0);
}

TEST(Device, SkipQuotes) {
  EXPECT_STREQ(zel::skipQuotes("\"'abc"), "abc");
  EXPECT_STREQ(zel::skipQuotes("a'bc\""), "a'bc\"");
  EXPECT_STREQ(zel::skipQuotes("'\"'"), "");
  EXPECT_STREQ(zel::skipQuotes(""), "");
  EXPECT_EQ(zel::skipQuotes(nullptr), nullptr);
}

}  // namespace
