// Threads for loops over items, taken only where the work pays for them.
#pragma once

#include <cstdint>

#include "threads/crew.h"

namespace zel {

void runChunks(std::uint64_t count, std::uint64_t grain, double nanoseconds, ChunkFunction function,
               const void* body);

// Calls body(begin, end) for [0, grain), [grain, 2 grain), … [.., count), each chunk exactly once
// and whole, on any thread and in any order; returns when all are done. The chunks do not depend on
// the number of threads, so results written per chunk do not either. nanosecondsPerItem is the
// caller's estimate for one thread and decides whether threads are worth their hand-off. The body
// must not throw. Nothing is allocated. Throws Stopped where the calling thread's StopScope had
// chunks left out.
template <typename Body>
void forEachChunk(std::uint64_t count, std::uint64_t grain, double nanosecondsPerItem,
                  const Body& body) {
  runChunks(
      count, grain, static_cast<double>(count) * nanosecondsPerItem,
      [](const void* erased, std::uint64_t begin, std::uint64_t end) {
        (*static_cast<const Body*>(erased))(begin, end);
      },
      &body);
}

// Threads that loops may use: the calling thread's CrewScope, else OMP_NUM_THREADS, and the
// processors this process may run on decide.
int threadCount();

// Whether a loop of this estimated time on one thread, called from here, would get threads if it
// has more than one chunk.
bool isWorthThreads(double nanoseconds);

void runCrew(int members, ChunkFunction function, const void* body);

// Calls body(0) on the calling thread and meanwhile body(1 … members - 1), each at most once and on
// a thread of its own. A call that no thread has begun when body(0) returns is left out. Returns
// when all are done. Loops within run on one thread if there are several. The body must not throw.
template <typename Body>
void runCrew(int members, const Body& body) {
  runCrew(
      members,
      [](const void* erased, std::uint64_t member, std::uint64_t /*next*/) {
        (*static_cast<const Body*>(erased))(static_cast<int>(member));
      },
      &body);
}

}  // namespace zel
