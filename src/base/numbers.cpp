#include "base/numbers.h"

#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

#include "base/output/six_digits.h"

namespace zel {
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

// Of a number that ends where the rest begins.
NumberExtent extentBefore(std::string_view rest) {
  return skipSpace(rest).empty() ? NumberExtent::all : NumberExtent::front;
}

// The rare forms: infinities, NaNs, hexadecimal numbers, overflow and underflow.
ParsedNumber<double> readByLibrary(std::string_view text) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string copy(text);
  char* end = nullptr;
  errno = 0;
  const double value = strtod_l(copy.c_str(), &end, cLocale);
  if (end == copy.c_str()) return {value, NumberExtent::none};
  const bool lost = errno == ERANGE && (value == 0 || std::isinf(value));
  return {value, lost ? NumberExtent::beyondRange : extentBefore(end)};
}

// Decimal digits; the number stays at limit + 1 once they exceed it.
std::uint64_t readDigitsUpTo(std::string_view text, std::uint64_t limit, NumberExtent& extent) {
  std::uint64_t number = 0;
  std::size_t count = 0;
  for (; count < text.size() && detail::digitValue(text[count]) <= 9; ++count)
    number = std::min(number * 10 + detail::digitValue(text[count]), limit + 1);
  extent = count == 0       ? NumberExtent::none
           : number > limit ? NumberExtent::beyondRange
                            : extentBefore(text.substr(count));
  return number;
}

}  // namespace

ParsedNumber<double> readDouble(std::string_view text) {
  const std::string_view number = skipSpace(text);
  std::string_view magnitude = number;
  const bool negative = takeSign(magnitude);
  if (magnitude.empty()) return {0, NumberExtent::none};
  if (!isDecimalStart(magnitude.front()) || startsHexadecimal(magnitude))
    return readByLibrary(number);
  double value = 0;
  const char* const end = magnitude.data() + magnitude.size();
  const auto result = std::from_chars(magnitude.data(), end, value);
  if (result.ec == std::errc::result_out_of_range) return readByLibrary(number);
  if (result.ec != std::errc{}) return {0, NumberExtent::none};
  return {negative ? -value : value, extentBefore({result.ptr, end})};
}

std::string_view withoutClosingQuotes(std::string_view text) {
  const std::size_t last = text.find_last_not_of("'\"");
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

ParsedNumber<std::uint32_t> readUnsigned(std::string_view text) {
  constexpr std::uint32_t limit = std::numeric_limits<std::uint32_t>::max();
  text = skipSpace(text);
  const bool negative = takeSign(text);
  NumberExtent extent{};
  const std::uint64_t number = readDigitsUpTo(text, limit, extent);
  if (number > limit) return {limit, extent};
  if (negative && number != 0) extent = NumberExtent::beyondRange;
  return {static_cast<std::uint32_t>(negative ? -number : number), extent};
}

ParsedNumber<std::int32_t> readInteger(std::string_view text) {
  constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
  text = skipSpace(text);
  const bool negative = takeSign(text);
  NumberExtent extent{};
  const auto number =
      static_cast<std::int64_t>(readDigitsUpTo(text, negative ? limit + 1 : limit, extent));
  const std::int64_t value = negative ? -number : number;
  return {static_cast<std::int32_t>(std::clamp(value, -limit - 1, limit)), extent};
}

char* formatDouble(char* text, double value) {
  const double magnitude = std::abs(value);
  if (SixDigits::serves(magnitude)) {
    if (value < 0) *text++ = '-';
    return SixDigits(magnitude).write(text);
  }
  return std::to_chars(text, text + numberCapacity, value, std::chars_format::general, 6).ptr;
}

char* formatDouble(char* text, double value, double resolution) {
  char* const end = formatDouble(text, value);
  if (std::isinf(resolution)) return end;
  const double read = parseDouble({text, static_cast<std::size_t>(end - text)});
  if (read == value || std::abs(read - value) <= resolution) return end;
  char* const limit = text + numberCapacity;
  const bool plain = std::trunc(value) == value && std::abs(value) <= detail::maxExactMantissa;
  return (plain ? std::to_chars(text, limit, value, std::chars_format::fixed)
                : std::to_chars(text, limit, value))
      .ptr;
}

char* formatInteger(char* text, std::int32_t value) {
  return std::to_chars(text, text + numberCapacity, value).ptr;
}

char* formatUnsigned(char* text, std::uint64_t value) {
  return std::to_chars(text, text + numberCapacity, value).ptr;
}

std::string exactText(double value) {
  char text[numberCapacity];
  return {text, formatDouble(text, value, 0)};
}

}  // namespace zel
