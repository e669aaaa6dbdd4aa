#include "zeldplus/inc/zelrandom.h"

#include <cstdint>

namespace zel::inline ZEL_PLATFORM {
namespace {

std::uint32_t state = 1;

}  // namespace

void seedRandom(unsigned seed) { state = seed; }

int nextRandom() {
  state = state * 214013U + 2531011U;
  return static_cast<int>((state >> 16) & static_cast<std::uint32_t>(randomMax));
}

}  // namespace zel::inline ZEL_PLATFORM
