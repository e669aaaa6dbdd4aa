// Numbers as text, in the C locale whatever the user's locale is. Parsing gives what the C
// library's conversions give from the start of the text, formatting what its printf gives.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace zel {

// How much of a text is the number that was read from its start; white space around it aside.
// Beyond the range: the value is another number than the text says.
enum class NumberExtent { all, front, none, beyondRange };

template <typename T>
struct ParsedNumber {
  T value;
  NumberExtent extent;
};

// As strtod: leading white space, signs, exponents, inf, nan and hexadecimal forms; text after the
// number is ignored, no number is 0.
ParsedNumber<double> readDouble(std::string_view text);
inline double parseDouble(std::string_view text) { return readDouble(text).value; }

// A number's text without the quotes behind it.
std::string_view withoutClosingQuotes(std::string_view text);

// As strtoul in base 10 with a 32-bit result: larger numbers give 4294967295, a minus sign negates
// modulo 2^32.
ParsedNumber<std::uint32_t> readUnsigned(std::string_view text);
inline std::uint32_t parseUnsigned(std::string_view text) { return readUnsigned(text).value; }

// As strtol in base 10 with a 32-bit result: numbers out of range give the nearest limit.
ParsedNumber<std::int32_t> readInteger(std::string_view text);
inline std::int32_t parseInteger(std::string_view text) { return readInteger(text).value; }

// The fast way for ordinary numbers: reads [sign]digits[.digits][e[sign]digits] from [text, end)
// where one rounding of exact operands gives the correct value (Clinger, "How to read floating
// point numbers accurately", 1990) and returns the end of what it read; null for every other form,
// and then value is unchanged.
inline const char* parseShortDecimal(const char* text, const char* end, double& value);

// Characters that no formatted number exceeds.
inline constexpr std::size_t numberCapacity = 32;

// "%g", "%d" and "%lu": writes at most numberCapacity characters, no NUL; returns the end.
char* formatDouble(char* text, double value);
// "%g" where its six digits are no further from the value than that, else the fewest digits that
// read back as the value; whole numbers up to 2^53 then have no exponent.
char* formatDouble(char* text, double value, double resolution);
char* formatInteger(char* text, std::int32_t value);
char* formatUnsigned(char* text, std::uint64_t value);

// The text that reads back as the value: six digits where they do.
std::string exactText(double value);

// What six digits may hide of a number between these bounds: their worst rounding of a number as
// large as the range. More is visible beside it.
inline double boundResolution(double lower, double upper) { return 5e-6 * (upper - lower); }

namespace detail {

// The powers of ten that a double holds exactly.
inline constexpr double exactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
inline constexpr int maxExactPower = 22;
inline constexpr std::uint64_t maxExactMantissa = std::uint64_t{1} << 53;

// Value of a decimal digit; 10 or more for any other character.
inline unsigned digitValue(char c) { return static_cast<unsigned char>(c) - unsigned{'0'}; }

// Appends the digits at text to mantissa, which wraps around after 19 of them.
inline const char* readDigits(const char* text, const char* end, std::uint64_t& mantissa) {
  for (unsigned digit; text != end && (digit = digitValue(*text)) <= 9; ++text)
    mantissa = mantissa * 10 + digit;
  return text;
}

// The same for digits whose number is hard to predict: eight at a time, without branches on them.
inline const char* readManyDigits(const char* text, const char* end, std::uint64_t& mantissa) {
  constexpr std::uint64_t tens[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
  while (std::endian::native == std::endian::little && end - text >= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text, 8);
    // The lowest high bit marks the first byte that is no digit.
    const std::uint64_t others =
        ((word + 0x4646464646464646) | (word - 0x3030303030303030)) & 0x8080808080808080;
    const int count = std::countr_zero(others) / 8;
    if (count == 0) return text;
    word = (word - 0x3030303030303030) << (64 - 8 * count);
    word = (word * 10) + (word >> 8);
    word = ((word & 0x000000FF000000FF) * 0x000F424000000064 +
            ((word >> 16) & 0x000000FF000000FF) * 0x0000271000000001) >>
           32;
    mantissa = mantissa * tens[count] + word;
    text += count;
    if (count < 8) return text;
  }
  return readDigits(text, end, mantissa);
}

// Reads [sign]digits up to three digits; null for any other form.
inline const char* readExponent(const char* text, const char* end, int& exponent) {
  const bool negative = text != end && *text == '-';
  if (negative || (text != end && *text == '+')) ++text;
  std::uint64_t number = 0;
  const char* const after = readDigits(text, end, number);
  if (after == text || after - text > 3) return nullptr;
  exponent += negative ? -static_cast<int>(number) : static_cast<int>(number);
  return after;
}

}  // namespace detail

inline const char* parseShortDecimal(const char* text, const char* end, double& value) {
  if (text == end) return nullptr;
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  std::uint64_t mantissa = 0;
  const char* after = detail::readDigits(text, end, mantissa);
  auto digitCount = after - text;
  int exponent = 0;
  if (after != end && *after == '.') {
    const char* const fraction = after + 1;
    after = detail::readManyDigits(fraction, end, mantissa);
    digitCount += after - fraction;
    if (digitCount > 19) return nullptr;
    exponent = -static_cast<int>(after - fraction);
  }
  if (digitCount == 0 || digitCount > 19 || mantissa > detail::maxExactMantissa) return nullptr;
  if (after != end && (*after == 'e' || *after == 'E')) {
    after = detail::readExponent(after + 1, end, exponent);
    if (after == nullptr) return nullptr;
  }
  if (exponent < -detail::maxExactPower || exponent > detail::maxExactPower) return nullptr;
  const auto exact = static_cast<double>(mantissa);
  const double magnitude =
      exponent < 0 ? exact / detail::exactPowers[-exponent] : exact * detail::exactPowers[exponent];
  value = negative ? -magnitude : magnitude;
  return after;
}

}  // namespace zel
