// Numbers that stand as arguments of options.
#pragma once

#include <algorithm>
#include <locale>
#include <sstream>
#include <string_view>
#include <type_traits>

#include "base/numbers.h"

namespace zelsvm_opt {
namespace detail {

// Whether a number that was read as 0 says that it is another one.
inline bool isLost(std::string_view text) {
  const std::string_view mantissa = text.substr(0, text.find_first_of("eE"));
  return mantissa.find_first_of("123456789") != std::string_view::npos;
}

}  // namespace detail

// As a stream reads it: white space is skipped, the number ends at the first character that cannot
// continue it, no number is 0, and one that the type cannot hold gives its nearest limit; of an
// unsigned type a minus sign negates modulo its range.
template <typename T>
zel::ParsedNumber<T> readArgument(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  T value{};
  stream >> value;
  if (stream.fail() && value == 0) return {value, zel::NumberExtent::none};
  if (stream.fail()) return {value, zel::NumberExtent::beyondRange};
  const auto consumed = stream.eof() ? text.size() : static_cast<std::size_t>(stream.tellg());
  const std::string_view number = text.substr(0, consumed);
  const bool negated =
      std::is_unsigned_v<T> && value != 0 && number.find('-') != std::string_view::npos;
  if (negated || (value == 0 && detail::isLost(number)))
    return {value, zel::NumberExtent::beyondRange};
  stream >> std::ws;
  return {value, stream.eof() ? zel::NumberExtent::all : zel::NumberExtent::front};
}

}  // namespace zelsvm_opt
