// Threads change how long things take, never what comes out.
#include "threads/parallel.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

#include "threads/join_governor.h"

namespace {

// Big enough for every loop to be handed to threads.
constexpr double longWork = 1e6;

class Threads : public testing::Test {
 protected:
  ~Threads() override { omp_set_num_threads(before); }
  const int before = omp_get_max_threads();
};

TEST_F(Threads, VisitEveryChunkOnceAndWhole) {
  for (const int threads : {1, 2})
    for (const std::uint64_t count : {0, 1, 99, 100, 101, 1000}) {
      omp_set_num_threads(threads);
      std::vector<std::atomic<int>> visits(count);
      zel::forEachChunk(count, 100, longWork, [&](std::uint64_t begin, std::uint64_t end) {
        EXPECT_EQ(begin % 100, 0U);
        EXPECT_EQ(end, std::min(begin + 100, count));
        for (std::uint64_t i = begin; i < end; ++i) ++visits[i];
      });
      for (const auto& visit : visits) EXPECT_EQ(visit, 1);
    }
}

// Counts what runs on another thread than the one that the count was made on.
class Strangers {
 public:
  void look() { found += std::this_thread::get_id() != home; }
  [[nodiscard]] int count() const { return found; }

 private:
  std::thread::id home = std::this_thread::get_id();
  std::atomic<int> found = 0;
};

TEST_F(Threads, NestedLoopsRunOnTheThreadThatMeetsThem) {
  omp_set_num_threads(2);
  std::atomic<int> inner = 0;
  std::atomic<int> strangers = 0;
  zel::forEachChunk(4, 1, longWork, [&](std::uint64_t, std::uint64_t) {
    Strangers here;
    zel::forEachChunk(8, 1, longWork, [&](std::uint64_t, std::uint64_t) {
      ++inner;
      here.look();
    });
    strangers += here.count();
  });
  EXPECT_EQ(inner, 32);
  EXPECT_EQ(strangers, 0);
}

// Waits for something that another thread does, but not for ever.
template <typename Condition>
bool comesTrue(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition() && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  return condition();
}

// Long enough apart for helpers to be awake, about to sleep and asleep.
TEST_F(Threads, HelpWhetherTheySleepOrNot) {
  omp_set_num_threads(2);
  if (zel::threadCount() == 1) GTEST_SKIP() << "one processor";
  for (const int microseconds : {0, 50, 5000}) {
    Strangers helpers;
    EXPECT_TRUE(comesTrue([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
      std::atomic<int> sum = 0;
      zel::forEachChunk(64, 1, longWork, [&](std::uint64_t chunk, std::uint64_t) {
        helpers.look();
        sum += static_cast<int>(chunk);
        // Enough for a sleeper to come while there is work left.
        std::this_thread::sleep_for(std::chrono::microseconds(5));
      });
      EXPECT_EQ(sum, 64 * 63 / 2);
      return helpers.count() > 100;
    })) << microseconds;
  }
}

// Who does not get the helpers does the work alone.
TEST_F(Threads, ServeLoopsOfSeveralThreads) {
  omp_set_num_threads(2);
  const auto sums = [] {
    for (int loop = 0; loop < 2000; ++loop) {
      std::atomic<int> sum = 0;
      zel::forEachChunk(16, 1, longWork, [&](std::uint64_t chunk, std::uint64_t) {
        sum += static_cast<int>(chunk);
      });
      ASSERT_EQ(sum, 16 * 15 / 2);
    }
  };
  const std::jthread other(sums);
  sums();
}

TEST_F(Threads, OfACrewRunTheirLoopsAlone) {
  omp_set_num_threads(2);
  for (const int members : {2, 3}) {
    std::vector<std::atomic<int>> called(3);
    std::atomic<int> strangers = 0;
    const int expected = std::min(members, zel::threadCount());
    Strangers owner;
    zel::runCrew(members, [&](int member) {
      ++called[static_cast<std::size_t>(member)];
      owner.look();
      Strangers here;
      zel::forEachChunk(8, 1, longWork, [&](std::uint64_t, std::uint64_t) { here.look(); });
      strangers += here.count();
      const auto& last = called[static_cast<std::size_t>(expected - 1)];
      EXPECT_TRUE(comesTrue([&] { return last == 1; }));
    });
    for (int member = 0; member < 3; ++member)
      EXPECT_EQ(called[static_cast<std::size_t>(member)], member < expected ? 1 : 0);
    EXPECT_EQ(owner.count(), expected - 1);
    EXPECT_EQ(strangers, 0);
  }
}

TEST_F(Threads, ShortWorkAndASingleThreadStayWithTheCaller) {
  Strangers helpers;
  const auto body = [&](std::uint64_t, std::uint64_t) { helpers.look(); };
  omp_set_num_threads(2);
  zel::forEachChunk(10, 1, 1.0, body);
  omp_set_num_threads(1);
  zel::forEachChunk(10, 1, longWork, body);
  EXPECT_EQ(zel::threadCount(), 1);
  EXPECT_EQ(helpers.count(), 0);
}

constexpr std::int64_t microsecond = 1000;
constexpr std::int64_t millisecond = 1000 * microsecond;

// Reports one loop after the other, each of so much gain, until helpers are paused; returns the
// pause.
std::int64_t pauseAfter(zel::JoinGovernor& governor, std::int64_t& now, std::int64_t gain) {
  for (int loops = 0; governor.allows(now); ++loops) {
    if (loops == 1000) return 0;
    now += millisecond;
    governor.report(now, gain);
  }
  const std::int64_t start = now;
  while (!governor.allows(now)) now += millisecond;
  return now - start;
}

TEST(Governor, LetsHelpersWorkThatSaveTimeAndForgivesAHiccup) {
  zel::JoinGovernor governor;
  std::int64_t now = 0;
  EXPECT_EQ(pauseAfter(governor, now, 90 * microsecond), 0);
  governor.report(now, -4 * millisecond);
  EXPECT_TRUE(governor.allows(now));
}

TEST(Governor, PausesLongerEachTimeThatHelpersLoseAndShortlyAfterTheyPaid) {
  zel::JoinGovernor governor;
  std::int64_t now = 0;
  const auto losing = [&] { return pauseAfter(governor, now, -9 * millisecond) / millisecond; };
  for (const std::int64_t expected : {50, 100, 200, 400, 800, 1000, 1000})
    EXPECT_EQ(losing(), expected);
  EXPECT_EQ(pauseAfter(governor, now, 90 * microsecond), 0);
  EXPECT_EQ(losing(), 50);
}

}  // namespace
