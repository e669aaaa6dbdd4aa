// "%g" for the magnitudes that ordinary data have, by integer arithmetic.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/numbers.h"

namespace zel {

// The six significant digits of a magnitude that is its mantissa over a power of two: times a power
// of ten it is a 117-bit integer over the same power of two, so it is rounded exactly.
class SixDigits {
 public:
  // Magnitudes from 1e-13 on that "%g" writes with six digits before the point at most.
  static bool serves(double magnitude) { return magnitude >= 1e-13 && magnitude < 999999.5; }

  explicit SixDigits(double magnitude) {
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    mantissa = (bits & 0xFFFFFFFFFFFFF) | 0x10000000000000;
    places = static_cast<int>(1075 - (bits >> 52));
    // From the binary exponent, times log10(2); it may be one too small.
    exponent = ((52 - places) * 1233) >> 12;
    number = scaled();
    if (number < 1000000) return;
    ++exponent;
    number = scaled();
  }

  // Writes them as "%g" does; returns the end.
  char* write(char* text) const {
    char digits[6];
    std::uint32_t rest = number;
    for (int i = 5; i >= 0; --i, rest /= 10) digits[i] = static_cast<char>('0' + rest % 10);
    std::ptrdiff_t count = 6;
    while (count > 1 && digits[count - 1] == '0') --count;
    if (exponent < -4) {
      text = writeFraction(digits, 1, count, text);
      text = std::copy_n(-exponent < 10 ? "e-0" : "e-1", 3, text);
      *text++ = static_cast<char>('0' + -exponent % 10);
      return text;
    }
    if (exponent >= 0) return writeFraction(digits, exponent + 1, count, text);
    text = std::copy_n("0.000", 1 - exponent, text);
    return std::copy_n(digits, count, text);
  }

 private:
  __extension__ using Wide = unsigned __int128;

  // The magnitude times 10^(5 - exponent), ties to even.
  [[nodiscard]] std::uint32_t scaled() const {
    const Wide product =
        Wide{mantissa} * static_cast<std::uint64_t>(detail::exactPowers[5 - exponent]);
    const auto whole = static_cast<std::uint32_t>(product >> places);
    const Wide remainder = product - (Wide{whole} << places);
    const Wide half = Wide{1} << (places - 1);
    return whole +
           static_cast<std::uint32_t>(remainder > half || (remainder == half && whole % 2 != 0));
  }

  // The digits with a point behind the first `before` of them, where any follow.
  static char* writeFraction(const char* digits, std::ptrdiff_t before, std::ptrdiff_t count,
                             char* text) {
    text = std::copy_n(digits, before, text);
    if (count <= before) return text;
    *text++ = '.';
    return std::copy(digits + before, digits + count, text);
  }

  std::uint64_t mantissa;
  int places;    // binary
  int exponent;  // decimal
  std::uint32_t number;
};

}  // namespace zel
