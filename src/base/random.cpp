#include "base/random.h"

#include <cstdint>

namespace zel {
namespace {

constexpr std::uint32_t multiplier = 214013U;
constexpr std::uint32_t increment = 2531011U;

thread_local std::uint32_t state = 1;

}  // namespace

void seedRandom(unsigned seed) { state = seed; }

unsigned randomSeedHere() { return state; }

// Squares the step x -> a x + c for every binary digit of the count.
unsigned seedBehind(unsigned seed, std::uint64_t count) {
  std::uint32_t a = multiplier;
  std::uint32_t c = increment;
  for (; count != 0; count >>= 1) {
    if (count % 2 != 0) seed = seed * a + c;
    c *= a + 1;
    a *= a;
  }
  return seed;
}

int nextRandom() {
  state = state * multiplier + increment;
  return static_cast<int>((state >> 16) & static_cast<std::uint32_t>(randomMax));
}

}  // namespace zel
