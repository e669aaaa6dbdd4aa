// Decides whether threads pay for their joins while other programs want the processors too.
#pragma once

#include <cstdint>

namespace zel::inline ZEL_PLATFORM {

// A team's join waits for every thread, even for one that the system is not running just then, and
// that may take far longer than the work. So the time that teams save is kept as a balance: when it
// is used up, loops run on one thread for 50 ms, and for twice as long, up to a second, each time
// that trying again was a loss as a whole. Times are nanoseconds.
class JoinGovernor {
 public:
  // True if a team may be used now.
  [[nodiscard]] bool allows(std::int64_t now) const { return now >= pauseEnd; }

  // A team took so long for what one thread would have done in about alone.
  void report(std::int64_t now, std::int64_t elapsed, std::int64_t alone);

 private:
  std::int64_t balance = 0;    // what hiccups may still cost
  std::int64_t phaseGain = 0;  // saved since teams were last allowed
  std::int64_t pause = 0;
  std::int64_t pauseEnd = 0;
};

}  // namespace zel::inline ZEL_PLATFORM
