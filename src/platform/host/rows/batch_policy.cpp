#include "platform/host/rows/batch_policy.h"

#include <algorithm>

namespace zelsvm {
namespace {

constexpr unsigned firstTogether = 4;
constexpr unsigned period = 32;
constexpr unsigned longPause = 128;
constexpr double manyUsed = 0.5;
constexpr double fewUsed = 0.3;

}  // namespace

BatchPolicy::BatchPolicy(unsigned most) : most(most), together(std::min(most, firstTogether)) {}

unsigned BatchPolicy::guesses(std::uint64_t usedSoFar) {
  if (most <= 1) return 0;
  if (pause > 0 && --pause > 0) return 0;
  if (++misses > period) adapt(usedSoFar);
  return together - 1;
}

void BatchPolicy::adapt(std::uint64_t usedSoFar) {
  const double share =
      made == 0 ? 1 : static_cast<double>(usedSoFar - used) / static_cast<double>(made);
  if (share > manyUsed) {
    together = std::min(2 * together, most);
  } else if (share < fewUsed) {
    if (together <= 2) pause = longPause;
    together = std::max(together / 2, 2u);
  }
  misses = 0;
  made = 0;
  used = usedSoFar;
}

}  // namespace zelsvm
