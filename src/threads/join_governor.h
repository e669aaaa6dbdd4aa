// Decides whether threads pay for their joins while other programs want the processors too.
#pragma once

#include <cstdint>

namespace zel {

// A loop waits for the chunks that helpers have begun, even for one whose thread the system has
// stopped, and that may take far longer than the work. So the time that helpers save is kept as a
// balance: when it is used up, loops run on one thread for 50 ms, and for twice as long, up to a
// second, each time that trying again was a loss as a whole. Times are nanoseconds.
class JoinGovernor {
 public:
  // True if helpers may be asked now.
  [[nodiscard]] bool allows(std::int64_t now) const { return now >= pauseEnd; }

  // Helpers made a loop end so much earlier; a negative gain is the time lost by waiting for them.
  void report(std::int64_t now, std::int64_t gain);

 private:
  std::int64_t balance = 0;    // what hiccups may still cost
  std::int64_t phaseGain = 0;  // saved since helpers were last allowed
  std::int64_t pause = 0;
  std::int64_t pauseEnd = 0;
};

}  // namespace zel
