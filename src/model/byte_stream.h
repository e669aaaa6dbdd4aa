// Numbers and lists as bytes, the lowest first, and back.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/errors.h"
#include "base/interval.h"

namespace zelsvm {

inline constexpr const char* notFiniteText = "The model holds numbers that are not finite.";
inline constexpr const char* brokenBytesText = "The bytes of the model are damaged.";

// Lists stand behind their length, a whole number of 64 bits.
class ByteWriter {
 public:
  // Whole numbers of any size.
  template <typename U>
  void whole(U number) {
    auto rest = static_cast<std::make_unsigned_t<U>>(number);
    char lowestFirst[sizeof rest];
    for (std::size_t k = 0; k < sizeof rest; ++k)
      lowestFirst[k] = static_cast<char>(rest >> 8 * k & 0xff);
    bytes.append(lowestFirst, sizeof lowestFirst);
  }
  void flag(bool value) { bytes += value ? '\1' : '\0'; }
  // Throws AppException for one that is not finite.
  void number(double value) {
    if (!std::isfinite(value)) throw zel::AppException(notFiniteText);
    whole(std::bit_cast<std::uint64_t>(value));
  }
  void interval(const zel::Interval& ends) {
    number(ends.lower);
    number(ends.upper);
  }
  template <typename U>
  void list(std::span<const U> items) {
    whole(std::uint64_t{items.size()});
    for (const U item : items) {
      if constexpr (std::is_floating_point_v<U>)
        number(item);
      else
        whole(item);
    }
  }

  std::string bytes;
};

// Throws RuntimeException where the bytes end too early.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest(bytes) {}

  template <typename U>
  U whole() {
    const std::string_view taken = take(sizeof(U));
    std::make_unsigned_t<U> result = 0;
    for (std::size_t k = sizeof result; k > 0; --k)
      result = static_cast<decltype(result)>(static_cast<std::uint64_t>(result) << 8 |
                                             static_cast<unsigned char>(taken[k - 1]));
    return static_cast<U>(result);
  }
  // Throws RuntimeException for anything but 0 and 1.
  bool flag() {
    const char value = take(1)[0];
    require(value == '\0' || value == '\1');
    return value == '\1';
  }
  // Throws AppException for one that is not finite.
  double number() {
    const double value = std::bit_cast<double>(whole<std::uint64_t>());
    if (!std::isfinite(value)) throw zel::AppException(notFiniteText);
    return value;
  }
  zel::Interval interval() {
    const double lower = number();
    return {lower, number()};
  }
  // The length of a list whose items take so many bytes, all of which are there.
  std::uint64_t count(std::uint64_t itemBytes) {
    const auto items = whole<std::uint64_t>();
    require(items <= rest.size() / itemBytes);
    return items;
  }
  // Into a list type that is made with its length.
  template <typename List>
  List list() {
    using Item = std::remove_cvref_t<decltype(*std::declval<List&>().data())>;
    List items(count(sizeof(Item)));
    for (std::uint64_t i = 0; i < items.size(); ++i) {
      if constexpr (std::is_floating_point_v<Item>)
        items.data()[i] = number();
      else
        items.data()[i] = whole<Item>();
    }
    return items;
  }

  [[nodiscard]] bool isAtEnd() const { return rest.empty(); }
  static void require(bool holds) {
    if (!holds) throw zel::RuntimeException(brokenBytesText);
  }

 private:
  std::string_view take(std::size_t count) {
    require(count <= rest.size());
    const std::string_view taken = rest.substr(0, count);
    rest.remove_prefix(count);
    return taken;
  }

  std::string_view rest;
};

}  // namespace zelsvm
