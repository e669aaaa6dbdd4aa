// One line of a data or model file, taken apart as the C library's strtok does it.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/numbers.h"
#include "base/output/file_warnings.h"

namespace zelsvm {

// Takes tokens and index:value pairs from the front of a line. The character behind the line must
// be readable and no part of a number, as CFile::readLine promises. What is no ordinary number or
// pair goes to the warnings, if any, which have begun the line.
class SampleLine {
 public:
  explicit SampleLine(std::string_view line, zel::FileWarnings* warnings = nullptr)
      : next(line.data()), end(line.data() + line.size()), warnings(warnings) {}

  // The next token between blanks and tabs; empty when there is none.
  std::string_view token() {
    return take([](char c) { return isBlank(c); });
  }

  // The next token between colons; it may hold blanks. Empty when there is none.
  std::string_view tokenBeforeColon() {
    return take([](char c) { return c == ':'; });
  }

  // Value of a token that was taken from the line; what it is, for warnings.
  [[nodiscard]] double number(std::string_view token, std::string_view what) const {
    double value = 0;
    const char* const tokenEnd = token.data() + token.size();
    const char* const after = zel::parseShortDecimal(token.data(), tokenEnd, value);
    return after == tokenEnd ? value : unusualNumber(token, what, warnings);
  }

  // Warns where something is left in the line.
  void warnOfRest() const { warnOfText({next, static_cast<std::size_t>(end - next)}, warnings); }

  // The next pair; false at the end of the line, also where an index has no value.
  bool nextPair(std::uint32_t& index, double& value) {
    const SampleLine line = *this;
    const char* const digits = readIndex(index);
    if (digits != nullptr) {
      const char* const after = zel::parseShortDecimal(digits, end, value);
      if (after != nullptr && (after == end || isBlank(*after))) {
        next = after == end ? end : after + 1;
        return true;
      }
      next = digits;
    }
    const std::string_view indexText = digits == nullptr ? tokenBeforeColon() : "";
    const std::string_view valueText = token();
    if (valueText.empty()) {
      line.warnOfRest();
      return false;
    }
    if (digits == nullptr) index = unusualIndex(indexText, warnings);
    value = unusualNumber(valueText, "value", warnings);
    return true;
  }

  // The same without converting the value.
  bool nextIndex(std::uint32_t& index) {
    const char* const value = readIndex(index);
    if (value != nullptr && value != end && !isBlank(*value)) {
      const char* const after = findBlank(value + 1);
      next = after == end ? end : after + 1;
      return true;
    }
    const std::string_view indexText = tokenBeforeColon();
    if (token().empty()) return false;
    index = zel::parseUnsigned(indexText);
    return true;
  }

  // Colons in the line. Byte counters of limited stretches, so that sixteen or more characters are
  // compared at once.
  [[nodiscard]] std::uint64_t colonCount() const {
    std::uint64_t count = 0;
    for (const char* text = next; text != end;) {
      const std::ptrdiff_t length = std::min<std::ptrdiff_t>(end - text, 240);
      unsigned char found = 0;
      for (std::ptrdiff_t i = 0; i < length; ++i)
        found = static_cast<unsigned char>(found + (text[i] == ':'));
      count += found;
      text += length;
    }
    return count;
  }

  // Index of the line's last pair without taking it; false where that pair or what stands before it
  // is not of the ordinary form.
  bool lastIndex(std::uint32_t& index) const {
    const char* colon = end;
    while (colon != next && colon[-1] != ':') --colon;
    if (colon == next || colon == end || isBlank(*colon)) return false;
    const char* digits = --colon;
    while (digits != next && digits[-1] >= '0' && digits[-1] <= '9') --digits;
    if (digits == next || !isBlank(digits[-1]) || colon - digits > 9) return false;
    std::uint64_t number = 0;
    if (digits == colon || zel::detail::readDigits(digits, colon, number) != colon) return false;
    index = static_cast<std::uint32_t>(number);
    return true;
  }

 private:
  static bool isBlank(char c) { return c == ' ' || c == '\t'; }

  // strtok with the delimiters that the predicate names.
  template <typename Delimiter>
  std::string_view take(Delimiter isDelimiter) {
    while (next != end && isDelimiter(*next)) ++next;
    const char* const begin = next;
    while (next != end && !isDelimiter(*next)) ++next;
    const std::string_view token(begin, static_cast<std::size_t>(next - begin));
    if (next != end) ++next;
    return token;
  }

  // Reads an index in its ordinary form, up to nine digits and a colon, and returns the place
  // behind the colon; null for any other form.
  const char* readIndex(std::uint32_t& index) const {
    const char* digits = next;
    while (digits != end && isBlank(*digits)) ++digits;
    std::uint64_t number = 0;
    const char* const colon = zel::detail::readDigits(digits, end, number);
    if (colon == end || *colon != ':' || colon == digits || colon - digits > 9) return nullptr;
    index = static_cast<std::uint32_t>(number);
    return colon + 1;
  }

  // The first blank or tab from text on, or the end: eight characters at a time.
  const char* findBlank(const char* text) const {
    if (text == end || isBlank(*text)) return text;  // values of one character are common
    while (std::endian::native == std::endian::little && end - text >= 8) {
      std::uint64_t word = 0;
      std::memcpy(&word, text, 8);
      // The lowest high bit marks the first byte up to the blank's code.
      const std::uint64_t low = (word - 0x2121212121212121) & ~word & 0x8080808080808080;
      text += std::countr_zero(low) / 8;
      if (low == 0) continue;
      if (isBlank(*text)) return text;
      ++text;
    }
    while (text != end && !isBlank(*text)) ++text;
    return text;
  }

  // By value and apart, so that the line stays in registers.
  static double unusualNumber(std::string_view text, std::string_view what,
                              zel::FileWarnings* warnings);
  static std::uint32_t unusualIndex(std::string_view text, zel::FileWarnings* warnings);
  static void warnOfText(std::string_view text, zel::FileWarnings* warnings);

  const char* next;
  const char* end;
  zel::FileWarnings* warnings;
};

}  // namespace zelsvm
