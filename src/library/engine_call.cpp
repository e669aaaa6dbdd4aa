#include "library/engine_call.h"

namespace zelsvm {

// Here, so that each has its type information in the library only.
AppException::~AppException() = default;
RuntimeException::~RuntimeException() = default;
Cancelled::Cancelled() : std::runtime_error("The call was cancelled.") {}
Cancelled::~Cancelled() = default;

namespace detail {
namespace {

thread_local bool isInCall = false;

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
                  .seconds = std::chrono::duration<double>(now - start).count(),
                  .pairs = progress.pairs,
                  .pairsDone = progress.pairsDone});
}

CallMark::CallMark() {
  if (isInCall) throw AppException("A sink must not call the library.");
  isInCall = true;
}

CallMark::~CallMark() { isInCall = false; }

}  // namespace detail
}  // namespace zelsvm
