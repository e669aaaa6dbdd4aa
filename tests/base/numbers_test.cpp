#include "base/numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

namespace {

std::string format(const char* pattern, double value) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

double anyDouble(std::mt19937_64& random) { return std::bit_cast<double>(random()); }

// The same bits as the C library's; the text behind the view must not be looked at.
void expectLikeLibrary(const std::string& text) {
  const double expected = std::strtod(text.c_str(), nullptr);
  const std::string surrounded = text + "7";
  const std::string_view view(surrounded.data(), text.size());
  EXPECT_EQ(std::bit_cast<std::uint64_t>(zel::parseDouble(view)),
            std::bit_cast<std::uint64_t>(expected))
      << '"' << text << '"';
  double value = expected;
  const char* const end = view.data() + view.size();
  if (zel::parseShortDecimal(view.data(), end, value) == end) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
  }
}

TEST(ParseDouble, ReadsEveryFormOfTheLibrary) {
  std::istringstream forms(
      "| |0|-0|+0|-0.0|1|+1|--1|+-1|1.|.5|.|-.|-.5|.e5|1e|1e+|1e-|1e5x|1E5|1e+05|1e-05|"
      "2abc|abc|\t\n\v\f\r 3|3 4|1,5|inf|-inf|INF|infinity|-Infinity|infinit|nan|-nan|NaN|"
      "nan(123)|nan(|nanx|in|n|0x|0x1|-0x1.8p1|0X.8|0x1p|0x1p-1074|0x1.fffffffffffff8p0|"
      "0xg|0x.p1|1e308|1e309|-1e309|1e400|1e-307|4.9e-324|5e-324|2.4e-324|2.5e-324|1e-400|"
      "-1e-400|0e999999999999|1e22|1e23|9007199254740992|9007199254740993|"
      "9007199254740993e1|123456789012345678|1e99999999999999999999|"
      "1e-99999999999999999999|0.000000000000000000000000000012345|12345678901234567890|"
      "123456789012345678901234567890|8.5|1.7976931348623157e308|1.7976931348623159e308|"
      "2.2250738585072011e-308|0.1e1|00000000000000000000001|0.30000000000000004|"
      "12345678.12345678|1.12345678 |1.1234567:|");
  for (std::string text; std::getline(forms, text, '|');) expectLikeLibrary(text);
  expectLikeLibrary(std::string(400, '9'));
  expectLikeLibrary("0." + std::string(400, '0') + "1e401");
  expectLikeLibrary("0x" + std::string(5000, '0') + "1p3");
}

TEST(ParseDouble, RoundsAsTheLibraryDoes) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 100000; ++i) {
    const double value = anyDouble(random);
    expectLikeLibrary(format("%.17g", value));
    expectLikeLibrary(format("%.16e", value));
    expectLikeLibrary(format("%g", value));
    expectLikeLibrary(format("%a", value));
    const auto small = static_cast<double>(random() % 2000000) - 1e6;
    expectLikeLibrary(format("%.9f", small / 999983));
  }
}

TEST(ParseDouble, ReadsAnyMixtureOfCharactersAsTheLibraryDoes) {
  std::mt19937_64 random(2);
  const std::string_view characters = "00123456789..--++eEpPxXinfatyNAN() \t";
  for (int i = 0; i < 300000; ++i) {
    std::string text(random() % 12, ' ');
    for (char& c : text) c = characters[random() % characters.size()];
    expectLikeLibrary(text);
  }
}

TEST(ParseIntegers, SaturateAndNegateIn32Bits) {
  // Text, as an unsigned and as a signed number.
  std::istringstream cases(
      "0|0|0||0|0|x1|0|0|+7|7|7| \t\v12x|12|12|7 8|7|7|- 1|0|0|0x10|0|0|007|7|7|-1|4294967295|-1|"
      "2147483647|2147483647|2147483647|2147483648|2147483648|2147483647|"
      "-2147483648|2147483648|-2147483648|-2147483649|2147483647|-2147483648|"
      "4294967295|4294967295|2147483647|4294967296|4294967295|2147483647|"
      "-4294967295|1|-2147483648|-4294967296|4294967295|-2147483648|"
      "18446744073709551617|4294967295|2147483647|"
      "99999999999999999999999999|4294967295|2147483647|");
  std::string text, unsignedValue, signedValue;
  while (std::getline(cases, text, '|') && std::getline(cases, unsignedValue, '|') &&
         std::getline(cases, signedValue, '|')) {
    EXPECT_EQ(std::to_string(zel::parseUnsigned(text)), unsignedValue) << text;
    EXPECT_EQ(std::to_string(zel::parseInteger(text)), signedValue) << text;
  }
}

TEST(ParsedNumbers, SayHowMuchOfTheTextTheyAre) {
  using zel::NumberExtent;
  const auto initial = [](NumberExtent extent) { return "afnb"[static_cast<int>(extent)]; };
  // All, front, none or beyond the range: as a double, as an unsigned and as a signed number.
  std::istringstream cases(
      "12|aaa|12 \t\r|aaa| 12|aaa|1.5|aff|12x|fff|1 2|fff|x|nnn||nnn|-|nnn|.|nnn|1e|fff|0x10|aff|"
      "inf|ann|nan(1)|ann|infx|fnn|1e400|bff|-1e400|bbf|1e-400|bff|1e-310|aff|-1|aba|-0|aaa|"
      "2147483648|aab|-2147483648|aba|-2147483649|abb|4294967296|abb|4294967296x|fbb|");
  for (std::string text, extents; std::getline(cases, text, '|');) {
    std::getline(cases, extents, '|');
    const std::string found = {initial(zel::readDouble(text).extent),
                               initial(zel::readUnsigned(text).extent),
                               initial(zel::readInteger(text).extent)};
    EXPECT_EQ(found, extents) << text;
  }
}

std::string formatted(double value) {
  char text[zel::numberCapacity];
  return {text, zel::formatDouble(text, value)};
}

TEST(FormatNumbers, AreThoseOfPrintf) {
  std::istringstream values(
      "0|-0|1|-1|0.1|1e5|999999|999999.5|1e6|123456.5|1234567|1e-4|1e-5|0.00001234565|9.999995e-5|"
      "99999.95|1e-13|9.9999999e-14|0.076923076923076927|2.5|100000.5|inf|-inf|nan|-nan|"
      "1.7976931348623157e308|-1.7976931348623157e308|2.2250738585072014e-308|5e-324|-5e-324|"
      "1e100|-1e-100|");
  for (std::string text; std::getline(values, text, '|');) {
    const double value = std::strtod(text.c_str(), nullptr);
    EXPECT_EQ(formatted(value), format("%g", value)) << text;
  }
  std::mt19937_64 random(3);
  for (int i = 0; i < 300000; ++i) {
    const double wide = anyDouble(random);
    const double narrow = std::ldexp(static_cast<double>(random()), -64) * 10;
    ASSERT_EQ(formatted(wide), format("%g", wide));
    ASSERT_EQ(formatted(narrow), format("%g", narrow));
    // Often half-way between two texts.
    const double tied = std::ldexp(-static_cast<double>(random() % 4000000), -(i % 32));
    ASSERT_EQ(formatted(tied), format("%g", tied));
  }
}

std::string formatted(double value, double resolution) {
  char text[zel::numberCapacity];
  return {text, zel::formatDouble(text, value, resolution)};
}

TEST(FormatNumbers, HaveAsManyDigitsAsTheResolutionNeeds) {
  const struct {
    double value, resolution;
    const char* text;
  } cases[] = {{20261123, 0, "20261123"},
               {-20261123, 0, "-20261123"},
               {20261123, 22, "20261123"},
               {20261123, 23, "2.02611e+07"},
               {1e7, 0, "1e+07"},
               {9007199254740991, 0, "9007199254740991"},
               {9007199254740992, 0, "9007199254740992"},
               {-123456789012345680, 0, "-123456789012345680"},
               {1.2345678e300, 0, "1.2345678e+300"},
               {0.1, 0, "0.1"},
               {0.30000000000000004, 0, "0.30000000000000004"},
               {0.30000000000000004, 1e-16, "0.3"},
               {1700000123.25, 1, "1700000123.25"},
               {std::nextafter(0.0, 1.0), 0, "4.94066e-324"},
               {-0.0, 0, "-0"},
               {HUGE_VAL, 0, "inf"},
               {NAN, 0, "nan"}};
  for (const auto& c : cases) EXPECT_EQ(formatted(c.value, c.resolution), c.text);
  std::mt19937_64 random(4);
  for (int i = 0; i < 100000; ++i) {
    const double value = anyDouble(random);
    if (!std::isfinite(value)) continue;
    const std::string text = zel::exactText(value);
    ASSERT_LE(text.size(), zel::numberCapacity);
    ASSERT_EQ(zel::parseDouble(text), value) << text;
    ASSERT_EQ(formatted(value, HUGE_VAL), formatted(value));
    const auto whole = static_cast<double>(static_cast<std::int64_t>(random() >> 10) - (1LL << 53));
    ASSERT_EQ(zel::parseDouble(zel::exactText(whole)), whole);
    ASSERT_TRUE(zel::exactText(whole).find('.') == std::string::npos) << whole;
  }
}

TEST(FormatNumbers, WritesIntegersToTheirLimits) {
  char text[zel::numberCapacity];
  EXPECT_EQ(std::string(text, zel::formatInteger(text, -2147483647 - 1)), "-2147483648");
  EXPECT_EQ(std::string(text, zel::formatUnsigned(text, 18446744073709551615u)),
            "18446744073709551615");
}

}  // namespace
