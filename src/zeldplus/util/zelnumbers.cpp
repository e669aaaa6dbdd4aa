#include "zeldplus/inc/zelnumbers.h"

#include <locale.h>
#include <stdlib.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

#include "zeldplus/util/six_digits.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isDecimalStart(char c) { return detail::digitValue(c) <= 9 || c == '.'; }

std::string_view skipSpace(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  return text;
}

// Takes one sign off; true for a minus.
bool takeSign(std::string_view& text) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool negative = text.front() == '-';
  text.remove_prefix(1);
  return negative;
}

bool startsHexadecimal(std::string_view text) {
  return text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// The rare forms: infinities, NaNs, hexadecimal numbers, overflow and underflow.
double parseByLibrary(std::string_view text) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(std::string(text).c_str(), nullptr, cLocale);
}

// Decimal digits after white space and a sign; stays at limit + 1 once they exceed it.
std::uint64_t parseDigits(std::string_view text, std::uint64_t limit) {
  std::uint64_t number = 0;
  for (const char c : text) {
    const unsigned digit = detail::digitValue(c);
    if (digit > 9) break;
    number = number * 10 + digit;
    if (number > limit) return limit + 1;
  }
  return number;
}

}  // namespace

double parseDouble(std::string_view text) {
  const std::string_view number = skipSpace(text);
  std::string_view magnitude = number;
  const bool negative = takeSign(magnitude);
  if (magnitude.empty()) return 0;
  if (!isDecimalStart(magnitude.front()) || startsHexadecimal(magnitude))
    return parseByLibrary(number);
  double value = 0;
  const auto result = std::from_chars(magnitude.data(), magnitude.data() + magnitude.size(), value);
  if (result.ec == std::errc::result_out_of_range) return parseByLibrary(number);
  if (result.ec != std::errc{}) return 0;
  return negative ? -value : value;
}

std::uint32_t parseUnsigned(std::string_view text) {
  constexpr std::uint32_t limit = std::numeric_limits<std::uint32_t>::max();
  text = skipSpace(text);
  const bool negative = takeSign(text);
  const std::uint64_t number = parseDigits(text, limit);
  if (number > limit) return limit;
  return static_cast<std::uint32_t>(negative ? -number : number);
}

std::int32_t parseInteger(std::string_view text) {
  constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
  text = skipSpace(text);
  const bool negative = takeSign(text);
  const auto number = static_cast<std::int64_t>(parseDigits(text, limit));
  if (negative) return static_cast<std::int32_t>(-number);
  return static_cast<std::int32_t>(number > limit ? limit : number);
}

char* formatDouble(char* text, double value) {
  const double magnitude = std::abs(value);
  if (SixDigits::serves(magnitude)) {
    if (value < 0) *text++ = '-';
    return SixDigits(magnitude).write(text);
  }
  return std::to_chars(text, text + numberCapacity, value, std::chars_format::general, 6).ptr;
}

char* formatInteger(char* text, std::int32_t value) {
  return std::to_chars(text, text + numberCapacity, value).ptr;
}

char* formatUnsigned(char* text, std::uint64_t value) {
  return std::to_chars(text, text + numberCapacity, value).ptr;
}

}  // namespace zel::inline ZEL_PLATFORM
