// Tells when a solve gains nothing any more though rounding keeps its gap above the tolerance.
#pragma once

#include <cstdint>
#include <limits>

namespace zelsvm::inline ZEL_PLATFORM {

// Every step lowers the objective. Looked at once in so many steps that even the small gains of
// ill-conditioned problems add up to more than its rounding error.
class StallWatch {
 public:
  explicit StallWatch(std::uint64_t variables) : period(100'000 + variables), next(period) {}

  [[nodiscard]] bool isDue(std::uint64_t iterations) const { return iterations >= next; }

  // Has the objective not fallen since the last look? magnitude: the sum of its terms' absolute
  // values. Anything that is not a number counts as not falling.
  bool hasStalled(std::uint64_t iterations, double objective, double magnitude) {
    const double least = std::numeric_limits<double>::epsilon() * magnitude;
    const bool falling = last - objective > least;
    last = objective;
    next = iterations + period;
    return !falling;
  }

 private:
  std::uint64_t period;
  std::uint64_t next;
  double last = std::numeric_limits<double>::infinity();
};

}  // namespace zelsvm::inline ZEL_PLATFORM
