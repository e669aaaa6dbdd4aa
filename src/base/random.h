// The random sequence of a thread: 15-bit numbers that are the same on every machine.
#pragma once

#include <cstdint>

namespace zel {

// The largest number of the sequence.
inline constexpr int randomMax = 32767;

// Starts the calling thread's sequence anew; before the first call it runs as if seeded with 1.
void seedRandom(unsigned seed);

// The seed that continues the calling thread's sequence from where it stands.
unsigned randomSeedHere();

// The seed that continues a sequence of this seed behind its first count numbers.
unsigned seedBehind(unsigned seed, std::uint64_t count);

// Next number, 0 to randomMax: bits 16 to 30 of a 32-bit linear congruential generator.
int nextRandom();

}  // namespace zel
