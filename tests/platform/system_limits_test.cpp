// What the system says about memory and processors, read from files laid out like its own.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include "platform/system/available_memory.h"
#include "platform/system/control_group.h"
#include "support/temp_folder.h"

namespace {

class ControlGroups : public testing::Test {
 protected:
  void write(const std::string& file, const std::string& text) const { files.write(file, text); }
  zel::MemoryLimit read(const std::string& membership) {
    write("membership", membership);
    return zel::controlGroupMemory((root / "membership").c_str(), root.c_str());
  }
  double processors(const std::string& membership) {
    write("membership", membership);
    return zel::controlGroupProcessors((root / "membership").c_str(), root.c_str());
  }

  const zeltest::TempFolder files;
  const std::filesystem::path& root = files.folder();
};

TEST_F(ControlGroups, LimitTheGroupAndEverythingBelowIt) {
  write("a/memory.max", "1000\n");
  write("a/memory.current", "900\n");
  write("a/memory.stat", "anon 500\nactive_file 100\ninactive_file 300\n");
  write("a/b/memory.max", "max\n");
  write("a/b/memory.current", "10\n");
  write("a/b/c/memory.max", "700\n");
  write("a/b/c/memory.current", "100\n");
  EXPECT_EQ(read("0::/a/b/c\n").total, 700U);
  EXPECT_EQ(read("0::/a/b/c\n").free, 400U);  // of the outermost group, its idle cache not counted
  EXPECT_EQ(read("0::/a/b\n").total, 1000U);
}

TEST_F(ControlGroups, OfTheFirstVersionCountToo) {
  write("memory/job/memory.limit_in_bytes", "5000\n");
  write("memory/job/memory.usage_in_bytes", "6000\n");
  const auto limit = read("9:cpu:/\n4:memory:/job\n0::/\n");
  EXPECT_EQ(limit.total, 5000U);
  EXPECT_EQ(limit.free, 0U);
}

TEST_F(ControlGroups, ThatAreNotVisibleLimitNothing) {
  write("memory.max", "800\n");
  write("memory.current", "300\n");
  EXPECT_EQ(read("0::/outside/of/this/container\n").free, 500U);
  std::filesystem::remove(root / "memory.max");
  EXPECT_EQ(read("0::/outside\n").free, zel::MemoryLimit::none);
  EXPECT_EQ(zel::controlGroupMemory("/no/such/file", "/no/such/root").total,
            zel::MemoryLimit::none);
}

TEST_F(ControlGroups, LimitProcessorTime) {
  const double none = std::numeric_limits<double>::infinity();
  EXPECT_EQ(processors("0::/a/b\n"), none);
  write("a/cpu.max", "150000 100000\n");
  write("a/b/cpu.max", "max 100000\n");
  EXPECT_EQ(processors("0::/a/b\n"), 1.5);
  EXPECT_EQ(processors("0::/\n"), none);
  write("cpu/job/cpu.cfs_quota_us", "-1\n");
  write("cpu/job/cpu.cfs_period_us", "50000\n");
  EXPECT_EQ(processors("4:cpu,cpuacct:/job\n0::/\n"), none);
  write("cpu/job/cpu.cfs_quota_us", "200000\n");
  EXPECT_EQ(processors("4:cpuacct,cpu:/job\n0::/\n"), 4.0);
}

TEST(AvailableMemory, IsPlausibleAndObeysTheAddressSpaceLimit) {
  const std::uint64_t available = zel::availableHostMemory();
  EXPECT_GT(available, std::uint64_t{1} << 20);
  EXPECT_LE(available, zel::totalHostMemory());
  EXPECT_LE(zel::availableHostMemory(available / 2), available / 8 * 5);
  std::uint64_t mappedPages = 0;
  std::ifstream("/proc/self/statm") >> mappedPages;
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  rlimit limited = before;
  constexpr std::uint64_t headroom = std::uint64_t{64} << 20;
  limited.rlim_cur = mappedPages * static_cast<std::uint64_t>(getpagesize()) + headroom;
  ASSERT_EQ(setrlimit(RLIMIT_AS, &limited), 0);
  const std::uint64_t underLimit = zel::availableHostMemory();
  const std::uint64_t total = zel::totalHostMemory();
  ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
  EXPECT_LE(underLimit, headroom);
  EXPECT_GE(underLimit, headroom / 2);
  EXPECT_LE(total, limited.rlim_cur);
}

}  // namespace
