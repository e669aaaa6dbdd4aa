#include "threads/parallel.h"

#include <omp.h>

#include <algorithm>
#include <cmath>

#include "platform/system/control_group.h"
#include "threads/clock.h"
#include "threads/join_governor.h"

namespace zel {
namespace {

// Threads beyond the time that a control group grants would only make the others wait for it.
int usableProcessors() {
  const int visible = omp_get_num_procs();
  return static_cast<int>(std::min<double>(visible, std::ceil(controlGroupProcessors())));
}

constexpr unsigned mostThreads = 4096;
// Work below this is done before a helper has taken its part.
constexpr double leastSharedNanoseconds = 2'000;

void runShared(const Loop& loop, double nanoseconds, JoinGovernor& governor, std::int64_t now) {
  Crew& crew = Crew::instance();
  crew.work();
  const auto [chunks, waited] = crew.end();
  const double part = static_cast<double>(chunks) / static_cast<double>(loop.chunks());
  governor.report(now + waited, static_cast<std::int64_t>(nanoseconds * part) - waited);
}

void runLoop(const Loop& loop, double nanoseconds) {
  static thread_local JoinGovernor governor;
  const std::uint64_t chunks = loop.chunks();
  if (chunks > 1 && isWorthThreads(nanoseconds)) {
    const std::int64_t now = monotonicNanoseconds();
    if (governor.allows(now) && Crew::instance().begin(loop, threadCount() - 1, nanoseconds))
      return runShared(loop, nanoseconds, governor, now);
  }
  for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) loop.run(chunk);
}

// A crew's members but the first, as a loop.
struct Members {
  ChunkFunction function;
  const void* body;
};

void runMember(const void* erased, std::uint64_t begin, std::uint64_t end) {
  const auto& members = *static_cast<const Members*>(erased);
  members.function(members.body, begin + 1, end + 1);
}

}  // namespace

int threadCount() {
  static const int processors = usableProcessors();
  const unsigned own = CrewScope::threadsHere();
  const int wanted =
      own == 0 ? omp_get_max_threads() : static_cast<int>(std::min(own, mostThreads));
  return std::max(1, std::min(wanted, processors));
}

bool isWorthThreads(double nanoseconds) {
  return nanoseconds >= leastSharedNanoseconds && threadCount() > 1 && !Crew::instance().isBusy();
}

void runChunks(std::uint64_t count, std::uint64_t grain, double nanoseconds, ChunkFunction function,
               const void* body) {
  const StopScope* const stop = StopScope::current();
  {
    const StopScope::Pause pause;
    runLoop({count, std::max<std::uint64_t>(grain, 1), function, body, stop}, nanoseconds);
  }
  if (stop != nullptr && stop->isSeen()) throw Stopped{};
}

void runCrew(int members, ChunkFunction function, const void* body) {
  constexpr double longEnough = 1e9;
  const Members others{function, body};
  const int helpers = std::min(members, threadCount()) - 1;
  Crew& crew = Crew::instance();
  const bool helped = helpers > 0 && crew.begin({static_cast<std::uint64_t>(helpers), 1, runMember,
                                                 &others, nullptr},
                                                helpers, longEnough);
  function(body, 0, 1);
  if (helped) crew.end();
}

}  // namespace zel
