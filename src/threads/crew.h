// Threads that stand by to take chunks of other threads' loops.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "threads/stop.h"

namespace zel {

// A loop body seen from the untyped side: called with a chunk's first item and the end of the
// chunk.
using ChunkFunction = void (*)(const void* body, std::uint64_t begin, std::uint64_t end);

struct Loop {
  std::uint64_t count;
  std::uint64_t grain;
  ChunkFunction function;
  const void* body;
  const StopScope* stop = nullptr;  // once it is set, chunks are left out

  [[nodiscard]] std::uint64_t chunks() const { return count / grain + (count % grain != 0); }
  void run(std::uint64_t chunk) const {
    if (stop != nullptr && stop->isSet()) return;
    const std::uint64_t begin = chunk * grain;
    function(body, begin, begin + (grain < count - begin ? grain : count - begin));
  }
};

// Helping threads. A loop is laid out for everybody to take chunks from, and is over
// when none is left or in work: a helper that the system does not run just then takes none and is
// not waited for. The owner takes the first chunk each time and helpers take the last, so that much
// the same data stay in a thread's cache from loop to loop. Helpers look out for the next loop for
// some microseconds, then they sleep. They are never joined, so the crew is never destroyed; in a
// forked child there are none.
class Crew {
 public:
  // The one that the calling thread's loops use: that of its CrewScope, else one for the whole
  // process.
  static Crew& instance();
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  // True while a loop is laid out.
  [[nodiscard]] bool isBusy() const { return owned.load(std::memory_order_relaxed); }

  // Lays out the loop for at least so many helpers; false while another is, or where no helper can
  // be started. nanoseconds is its length on one thread: helpers asleep are woken when it pays.
  bool begin(const Loop& loop, int helpers, double nanoseconds);

  // For the thread that began: takes chunks until none is left.
  void work();

  struct HelpersPart {
    std::uint64_t chunks;
    std::int64_t waited;  // nanoseconds that the last of them was waited for
  };
  // For the thread that began: takes back the chunks that are left, waits for those in work.
  HelpersPart end();

 private:
  friend class CrewScope;
  Crew() = default;
  ~Crew() = default;

  bool haveHelpers(int wanted);
  void wakeHelpers(double nanoseconds);
  bool runChunk(bool first);
  std::int64_t awaitFinished(std::uint64_t chunks);
  [[noreturn]] void help();
  void finishChunk();
  void awaitLoop();

  // The chunks that nobody has taken: the first in the lower half, the end in the upper. Who takes
  // one may read the loop until it is done.
  alignas(64) std::atomic<std::uint64_t> left{0};
  alignas(64) std::atomic<std::uint64_t> finished{0};  // chunks, by helpers
  alignas(64) Loop loop{};

  std::atomic<bool> owned{false};
  std::uint64_t taken = 0;  // chunks, by the owner
  int started = 0;
  bool canStart = true;
  double missed = 0;  // nanoseconds of loops that nobody was woken for

  std::mutex lock;  // for those who sleep
  std::condition_variable loopLaidOut;
  std::condition_variable chunkFinished;
  std::atomic<int> sleepers{0};
  std::atomic<bool> ownerSleeps{false};
};

// While it lives, the calling thread's loops have a number of threads of their own, whatever other
// threads do meanwhile. The helpers stay for later scopes of as many threads.
class CrewScope {
 public:
  // 1 for the calling thread alone; 0 changes nothing. Throws std::bad_alloc.
  explicit CrewScope(unsigned threads);
  ~CrewScope();
  CrewScope(const CrewScope&) = delete;
  CrewScope& operator=(const CrewScope&) = delete;

  // Of the calling thread; 0 without a scope.
  static unsigned threadsHere();

 private:
  Crew* lent = nullptr;
  unsigned threads;
  Crew* crewBefore;
  unsigned threadsBefore;
};

}  // namespace zel
