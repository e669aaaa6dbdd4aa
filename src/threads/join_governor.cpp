#include "threads/join_governor.h"

#include <algorithm>

namespace zel {
namespace {

constexpr std::int64_t shortestPause = 50'000'000;
constexpr std::int64_t longestPause = 1'000'000'000;
// Waiting may cost this much before they have saved anything.
constexpr std::int64_t credit = 500'000;
// Savings beyond this do not buy longer waits.
constexpr std::int64_t largestBalance = 5'000'000;

}  // namespace

void JoinGovernor::report(std::int64_t now, std::int64_t gain) {
  phaseGain += gain;
  balance = std::min(balance + gain, largestBalance);
  if (balance >= -credit) return;
  pause = phaseGain > 0 ? shortestPause : std::clamp(2 * pause, shortestPause, longestPause);
  pauseEnd = now + pause;
  balance = 0;
  phaseGain = 0;
}

}  // namespace zel
