#include "library/engine_call.h"

namespace zelsvm {

// Here, so that each has its type information in the library only.
AppException::~AppException() = default;
RuntimeException::~RuntimeException() = default;

namespace detail {
namespace {

std::mutex engineMutex;
thread_local bool hasTurn = false;

}  // namespace

void CallerSink::showProgress(const zel::SolveProgress& progress) {
  const Clock::time_point now = Clock::now();
  // No clock holds more than some hundred years.
  const double wait = sink->progressSeconds < 1e9 ? sink->progressSeconds : 1e9;
  next = now + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(wait));
  sink->progress({.iterations = progress.iterations,
                  .gap = progress.gap,
                  .tolerance = progress.tolerance,
                  .cacheHitRate = progress.cacheHitRate,
                  .supportVectors = progress.supportVectors,
                  .seconds = std::chrono::duration<double>(now - start).count()});
}

EngineTurn::EngineTurn() : lock(engineMutex) { hasTurn = true; }

EngineTurn::~EngineTurn() { hasTurn = false; }

bool EngineTurn::isTaken() { return hasTurn; }

}  // namespace detail
}  // namespace zelsvm
