#include "platform/host/parallel.h"

#include <omp.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <latch>
#include <thread>
#include <vector>

#include "platform/host/join_governor.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

// Work below this is done before a team has come together.
constexpr double leastTeamNanoseconds = 60'000;
constexpr double nanosecondsPerTeamMember = 5'000;

std::int64_t nanosecondsOf(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::int64_t clockNow() { return nanosecondsOf(CLOCK_MONOTONIC); }

// Time that the calling thread was really running.
std::int64_t ownTime() { return nanosecondsOf(CLOCK_THREAD_CPUTIME_ID); }

struct Loop {
  std::uint64_t count;
  std::uint64_t grain;
  ChunkFunction function;
  const void* body;
  std::atomic<std::uint64_t> next{0};

  [[nodiscard]] std::uint64_t chunks() const { return count / grain + (count % grain != 0); }

  void run(std::uint64_t chunk) const {
    const std::uint64_t begin = chunk * grain;
    function(body, begin, begin + std::min(grain, count - begin));
  }

  // Takes chunks until none is left; returns how many it took.
  std::uint64_t work() {
    const std::uint64_t all = chunks();
    std::uint64_t taken = 0;
    for (std::uint64_t chunk; (chunk = next.fetch_add(1, std::memory_order_relaxed)) < all; ++taken)
      run(chunk);
    return taken;
  }
};

// The threading runtime ends the process when it cannot start a thread, so that the first team's
// threads are tried before, all at once as it will need them.
bool canStart(int threads) {
  std::latch ended(1);
  std::vector<std::jthread> tried;
  try {
    for (int k = 0; k < threads; ++k) tried.emplace_back([&ended] { ended.wait(); });
  } catch (const std::exception&) {
    threads = 0;
  }
  ended.count_down();
  return threads > 0;
}

bool teamCanStart() {
  static const bool startable = canStart(threadCount() - 1);
  return startable;
}

// The team always has all threads: a team of another size would end threads and start new ones.
// The estimate serves where the others have left nothing for the first thread to measure.
void runTeam(Loop& loop, int threads, double estimate, JoinGovernor& governor, std::int64_t start) {
  auto alone = static_cast<std::int64_t>(estimate);
#pragma omp parallel num_threads(threads)
  {
    const bool first = omp_get_thread_num() == 0;
    const std::int64_t begin = first ? ownTime() : 0;
    const std::uint64_t taken = loop.work();
    if (first && taken > 0)
      alone = static_cast<std::int64_t>(static_cast<double>(ownTime() - begin) *
                                        static_cast<double>(loop.chunks()) /
                                        static_cast<double>(taken));
  }
  const std::int64_t end = clockNow();
  governor.report(end, end - start, alone);
}

}  // namespace

int threadCount() {
  static const int processors = omp_get_num_procs();
  return std::max(1, std::min(omp_get_max_threads(), processors));
}

bool isWorthThreads(double nanoseconds) {
  const int threads = threadCount();
  return threads > 1 && nanoseconds >= leastTeamNanoseconds + nanosecondsPerTeamMember * threads &&
         !omp_in_parallel();
}

void runChunks(std::uint64_t count, std::uint64_t grain, double nanoseconds, ChunkFunction function,
               const void* body) {
  static thread_local JoinGovernor governor;
  Loop loop{count, std::max<std::uint64_t>(grain, 1), function, body};
  const std::uint64_t chunks = loop.chunks();
  if (chunks > 1 && isWorthThreads(nanoseconds)) {
    const std::int64_t now = clockNow();
    if (teamCanStart() && governor.allows(now))
      return runTeam(loop, threadCount(), nanoseconds, governor, now);
  }
  for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) loop.run(chunk);
}

void runCrew(int members, void (*function)(const void* body, int member), const void* body) {
  if (!teamCanStart()) return function(body, 0);
#pragma omp parallel num_threads(threadCount())
  {
    if (omp_get_thread_num() < members) function(body, omp_get_thread_num());
  }
}

}  // namespace zel::inline ZEL_PLATFORM
