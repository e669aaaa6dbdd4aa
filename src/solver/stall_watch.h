// Tells when a solve will not reach its tolerance any more, though each step still changes
// something.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zelsvm {

// Looks at a solve after every so many steps. They are so many that even the small gains of
// ill-conditioned problems add up to more than rounding error. What is left to gain is at most the
// gap times the sum of the multipliers' bounds. A solve has stalled
// - in noise: the objective has not fallen by more than rounding error, or below what it can reach;
// - in an endless slope: for ten looks the gap has not come down, while what is left to gain would
//   take 10^13 steps at the present pace, weeks at least.
class StallWatch {
 public:
  StallWatch(std::uint64_t variables, double sumOfBounds)
      : period(100'000 + variables), room(sumOfBounds), next(period) {}

  // The gap now and then between two looks, over all variables or those that are not shrunk.
  void see(double gap, bool all) {
    lowest = std::min(lowest, gap);
    complete = complete && all;
  }

  [[nodiscard]] bool isDue(std::uint64_t iterations) const { return iterations >= next; }

  // magnitude: the sum of the absolute values of the objective's terms. Anything that is not a
  // number counts as noise.
  bool hasStalled(std::uint64_t iterations, double objective, double magnitude) {
    const double gain = last - objective;
    const double left = lowest * room;
    const double rounding = std::numeric_limits<double>::epsilon() * magnitude;
    const bool noise = !(gain > rounding) || objective < reachable - rounding;
    const double steps = static_cast<double>(iterations + period - next);
    const bool endless = gain / steps * endlessSteps < left && lowest >= 0.9 * closest;
    endlessLooks = endless ? endlessLooks + 1 : 0;
    if (!endless) closest = std::min(closest, lowest);
    if (complete) reachable = std::max(reachable, objective - left);
    last = objective;
    next = iterations + period;
    lowest = infinity;
    complete = true;
    return noise || endlessLooks == mostEndlessLooks;
  }

 private:
  static constexpr double infinity = std::numeric_limits<double>::infinity();
  static constexpr double endlessSteps = 1e13;
  static constexpr int mostEndlessLooks = 10;

  std::uint64_t period;
  double room;
  std::uint64_t next;
  double last = infinity;
  double lowest = infinity;   // gap since the last look
  double closest = infinity;  // gap before
  double reachable = -infinity;
  bool complete = true;
  int endlessLooks = 0;
};

}  // namespace zelsvm
