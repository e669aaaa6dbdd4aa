// The one random sequence of a run: 15-bit numbers that are the same on every machine.
#pragma once

namespace zel::inline ZEL_PLATFORM {

// The largest number of the sequence.
inline constexpr int randomMax = 32767;

// Starts the sequence anew; before the first call it runs as if seeded with 1.
void seedRandom(unsigned seed);

// Next number, 0 to randomMax: bits 16 to 30 of a 32-bit linear congruential generator.
int nextRandom();

}  // namespace zel::inline ZEL_PLATFORM
