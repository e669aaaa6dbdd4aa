#include "platform/host/rows/whole_numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelsvm {
namespace {

constexpr double mostPower = 1e9;
constexpr std::uint64_t blockSize = 64;
// One value in so many may need more decimals than there are: those near 0 in a file of six
// significant digits.
constexpr std::uint64_t valuesPerException = 64;

std::uint64_t exceptions(const DecimalScale& scale, const double* values, std::uint64_t count) {
  std::uint64_t found = 0;
  for (std::uint64_t k = 0; k < count; ++k) found += scale.isWhole(values[k]) ? 0u : 1u;
  return found;
}

// Infinity where one value is not a number.
double largestMagnitude(const double* values, std::uint64_t count) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  double largest = 0;
  for (std::uint64_t k = 0; k < count; ++k) {
    const double magnitude = std::abs(values[k]);
    largest = std::max(largest, magnitude <= infinity ? magnitude : infinity);
  }
  return largest;
}

}  // namespace

std::optional<DecimalScale> DecimalScale::find(const double* values, std::uint64_t count) {
  constexpr double mostWhole = std::numeric_limits<std::int32_t>::max();
  const double largest = largestMagnitude(values, count);
  if (!(largest <= mostWhole)) return std::nullopt;
  DecimalScale scale(1);
  std::uint64_t exceptional = 0;
  for (std::uint64_t k = 0; k < count; k += blockSize) {
    const std::uint64_t size = std::min(blockSize, count - k);
    std::uint64_t failing = exceptions(scale, values + k, size);
    while (failing != 0 && scale.factor < mostPower && largest * 10 * scale.factor <= mostWhole) {
      scale.factor *= 10;
      failing = exceptions(scale, values + k, size);
    }
    exceptional += failing;
    if (exceptional > blockSize / 2 + k / valuesPerException) return std::nullopt;
  }
  return scale;
}

}  // namespace zelsvm
