// How many rows to guess with a row that must be computed.
#pragma once

#include <cstdint>

namespace zelsvm {

// Starts with a few guesses and doubles or halves their number as many or few of the latest were
// used. Where hardly any was it guesses nothing for a while and then tries again.
class BatchPolicy {
 public:
  // Rows worth computing together; 1 for no guesses ever.
  explicit BatchPolicy(unsigned most = 1);

  // Guesses to make with the row that is missing now, given how many were used so far.
  unsigned guesses(std::uint64_t usedSoFar);
  // So many were made.
  void guessed(std::uint64_t count) { made += count; }

 private:
  void adapt(std::uint64_t usedSoFar);

  unsigned most;
  unsigned together;
  unsigned misses = 0;     // since the number was adapted
  unsigned pause = 0;      // misses still to pass without a guess
  std::uint64_t made = 0;  // guesses since then
  std::uint64_t used = 0;  // guesses used until then
};

}  // namespace zelsvm
