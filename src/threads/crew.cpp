#include "threads/crew.h"

#include <exception>
#include <map>
#include <thread>
#include <vector>

#include "threads/clock.h"

namespace zel {
namespace {

// Those of the calling thread's scope.
thread_local Crew* crewHere = nullptr;
thread_local unsigned threadsOfScope = 0;

// Crews that no scope has. Helpers never end, so that this stays, too.
struct IdleCrews {
  std::mutex lock;
  std::map<unsigned, std::vector<Crew*>> byThreads;
  std::size_t lent = 0;
};

IdleCrews& idleCrews() {
  static IdleCrews& crews = *new IdleCrews;
  return crews;
}

// Looks at something before sleep pays: about 50 and 10 microseconds.
constexpr int helperLooks = 2000;
constexpr int ownerLooks = 400;
// Work that is worth waking a thread.
constexpr double wakingNanoseconds = 30'000;

constexpr std::uint64_t beginMask = 0xffffffff;
constexpr std::uint64_t oneEnd = beginMask + 1;

std::uint64_t beginOf(std::uint64_t range) { return range & beginMask; }
std::uint64_t endOf(std::uint64_t range) { return range / oneEnd; }
std::uint64_t countOf(std::uint64_t range) { return endOf(range) - beginOf(range); }

// Tells the processor that this thread only waits.
void pause() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

template <typename Condition>
bool holdsSoon(int looks, const Condition& condition) {
  for (int look = 0; look < looks; ++look) {
    if (condition()) return true;
    pause();
  }
  return false;
}

}  // namespace

Crew& Crew::instance() {
  static Crew& common = *new Crew;
  return crewHere != nullptr ? *crewHere : common;
}

CrewScope::CrewScope(unsigned threads)
    : threads(threads), crewBefore(crewHere), threadsBefore(threadsOfScope) {
  if (threads == 0) return;
  if (threads > 1) {
    const std::scoped_lock locked(idleCrews().lock);
    std::vector<Crew*>& crews = idleCrews().byThreads[threads];
    // So that giving it back needs no memory.
    crews.reserve(crews.size() + ++idleCrews().lent);
    if (crews.empty()) crews.push_back(new Crew);
    lent = crews.back();
    crews.pop_back();
    crewHere = lent;
  }
  threadsOfScope = threads;
}

CrewScope::~CrewScope() {
  crewHere = crewBefore;
  threadsOfScope = threadsBefore;
  if (lent == nullptr) return;
  const std::scoped_lock locked(idleCrews().lock);
  --idleCrews().lent;
  idleCrews().byThreads[threads].push_back(lent);
}

unsigned CrewScope::threadsHere() { return threadsOfScope; }

bool Crew::begin(const Loop& newLoop, int helpers, double nanoseconds) {
  if (newLoop.chunks() > beginMask || owned.exchange(true, std::memory_order_acquire)) return false;
  if (!haveHelpers(helpers)) {
    owned.store(false, std::memory_order_release);
    return false;
  }
  loop = newLoop;
  taken = 0;
  left.store(loop.chunks() * oneEnd);
  wakeHelpers(nanoseconds);
  return true;
}

bool Crew::haveHelpers(int wanted) {
  try {
    for (; canStart && started < wanted; ++started) std::thread([this] { help(); }).detach();
  } catch (const std::exception&) {
    canStart = false;
  }
  return started > 0;
}

void Crew::wakeHelpers(double nanoseconds) {
  if (sleepers.load() == 0) return;
  missed += nanoseconds;
  if (missed < wakingNanoseconds) return;
  missed = 0;
  const std::scoped_lock locked(lock);
  loopLaidOut.notify_all();
}

bool Crew::runChunk(bool first) {
  std::uint64_t range = left.load(std::memory_order_relaxed);
  while (countOf(range) > 0) {
    const std::uint64_t rest = first ? range + 1 : range - oneEnd;
    if (left.compare_exchange_weak(range, rest, std::memory_order_acq_rel)) {
      loop.run(first ? beginOf(range) : endOf(range) - 1);
      return true;
    }
  }
  return false;
}

void Crew::work() {
  while (runChunk(true)) ++taken;
}

Crew::HelpersPart Crew::end() {
  const std::uint64_t byHelpers = loop.chunks() - countOf(left.exchange(0)) - taken;
  const std::int64_t waited = awaitFinished(byHelpers);
  finished.store(0, std::memory_order_relaxed);
  owned.store(false, std::memory_order_release);
  return {byHelpers, waited};
}

std::int64_t Crew::awaitFinished(std::uint64_t chunks) {
  const auto all = [&] { return finished.load() == chunks; };
  if (all()) return 0;
  const std::int64_t start = monotonicNanoseconds();
  if (!holdsSoon(ownerLooks, all)) {
    std::unique_lock locked(lock);
    ownerSleeps.store(true);
    chunkFinished.wait(locked, all);
    ownerSleeps.store(false);
  }
  return monotonicNanoseconds() - start;
}

void Crew::help() {
  crewHere = this;
  for (;;) {
    awaitLoop();
    while (runChunk(false)) finishChunk();
  }
}

void Crew::finishChunk() {
  finished.fetch_add(1);
  if (!ownerSleeps.load()) return;
  const std::scoped_lock locked(lock);
  chunkFinished.notify_one();
}

void Crew::awaitLoop() {
  const auto laidOut = [&] { return countOf(left.load()) > 0; };
  if (holdsSoon(helperLooks, laidOut)) return;
  std::unique_lock locked(lock);
  ++sleepers;
  loopLaidOut.wait(locked, laidOut);
  --sleepers;
}

}  // namespace zel
