// Records that the solvers' kernels and the host exchange.
#pragma once

#include <cstdint>

namespace zelsvm {

inline constexpr unsigned noIndex = 0xFFFFFFFFu;

// Maximum of -y G over the variables that may grow and minimum over those that may shrink.
template <typename T>
struct SmoUpperBeta {
  T up;
  T low;
};

// The best objective change found and the variable that gives it, noIndex when there is none.
template <typename T>
struct alignas(16) SmoLowerBeta {
  T value;
  unsigned index;
};

// What the last step added to the two multipliers.
template <typename T>
struct SmoDelta {
  T deltaI;
  T deltaJ;
};

static_assert(sizeof(SmoUpperBeta<double>) == 16);
static_assert(sizeof(SmoLowerBeta<double>) == 16);
static_assert(sizeof(SmoDelta<double>) == 16);

// First index of the working pair with the set's extreme values.
template <typename T>
struct SmoSelection {
  unsigned index;
  SmoUpperBeta<T> beta;
};

// What a solve returns: offset, objective, sum of multipliers, the nu solver's extra offset, the
// numbers of multipliers above 0 and at their bound, and how it went.
struct SmoSolution {
  double rho = 0;
  double obj = 0;
  double alphaSum = 0;
  double r = 0;
  std::uint64_t nSV = 0;
  std::uint64_t nBSV = 0;
  std::uint64_t iterations = 0;
  double gap = 0;  // the largest violation that is left
  bool isConverged = false;
  double seconds = 0;
};

}  // namespace zelsvm
