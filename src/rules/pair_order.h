// The order of the pairs of k classes: (0, 1), (0, 2) … (0, k - 1), (1, 2) …
#pragma once

#include <cstdint>

namespace zelsvm {

// Index of the pair (i, j), i < j.
constexpr std::uint64_t pairIndex(std::uint64_t i, std::uint64_t j, std::uint64_t k) {
  return i * k + j - (i + 1) * (i + 2) / 2;
}

constexpr std::uint64_t pairCount(std::uint64_t k) { return k * (k - 1) / 2; }

}  // namespace zelsvm
