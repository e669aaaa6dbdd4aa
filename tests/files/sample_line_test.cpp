// The line grammar against a plain tokenizer of the C library.
#include "files/sample_line.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::uint32_t, double>>;

std::uint32_t referenceIndex(const char* text) {
  text += std::strspn(text, " \t\n\v\f\r");
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  if (*text < '0' || *text > '9') return 0;
  errno = 0;
  const unsigned long long number = std::strtoull(text, nullptr, 10);
  if (errno == ERANGE || number > 4294967295) return 4294967295;
  return static_cast<std::uint32_t>(negative ? -number : number);
}

// First token, then the pairs.
std::pair<std::string, Pairs> referenceParse(std::string line) {
  char* state = nullptr;
  const char* const first = strtok_r(line.data(), " \t", &state);
  std::pair<std::string, Pairs> result(first == nullptr ? "" : first, {});
  while (first != nullptr) {
    const char* const index = strtok_r(nullptr, ":", &state);
    const char* const value = strtok_r(nullptr, " \t", &state);
    if (index == nullptr || value == nullptr) break;
    result.second.emplace_back(referenceIndex(index), std::strtod(value, nullptr));
  }
  return result;
}

void expectLikeReference(const std::string& line) {
  const auto expected = referenceParse(line);
  zelsvm::SampleLine withValues{std::string_view(line)};
  zelsvm::SampleLine withoutValues{std::string_view(line)};
  ASSERT_EQ(withValues.token(), expected.first) << line;
  withoutValues.token();
  std::uint32_t index = 0;
  double value = 0;
  for (const auto& [expectedIndex, expectedValue] : expected.second) {
    ASSERT_TRUE(withValues.nextPair(index, value)) << line;
    ASSERT_EQ(index, expectedIndex) << line;
    ASSERT_EQ(std::memcmp(&value, &expectedValue, sizeof value), 0) << line << ": " << value;
    ASSERT_TRUE(withoutValues.nextIndex(index)) << line;
    ASSERT_EQ(index, expectedIndex) << line;
  }
  ASSERT_FALSE(withValues.nextPair(index, value)) << line;
  ASSERT_FALSE(withoutValues.nextIndex(index)) << line;
}

TEST(SampleLine, TakesOddFormsApartAsStrtokDoes) {
  std::istringstream lines(
      "| \t |1|1 | 1 2:3 |1\t2:3\t4:5|1 1:0.5 7 8:9|1 1: 5|1 1::5|1 1:: 5 2:3|1 :5|"
      "1 :5 2:3|1 4x:1|1 1:0.5 2:|1 1:0.5 2|1:0.5 2:1|1 -1:2|1 4294967296:2|"
      "1 0000000000000000000001:2|1 1:nan 2:-inf 3:0x1p4 4:1e400|1 1:2:3 4:5|1 1:2abc 3:4|"
      "1  1:2   3:4|1 1:\t2 3:4|+1 +3:+4|1 1:\v5 2:\r6|1 123456789:1 1234567890:1|"
      "1 1:12345678 2:1234567890123456789012|");
  for (std::string line; std::getline(lines, line, '|');) expectLikeReference(line);
}

TEST(SampleLine, TakesMutatedLinesApartAsStrtokDoes) {
  std::mt19937 random(4);
  const std::string_view characters = "0123456789:: \t.-+exXn\v\r";
  for (int round = 0; round < 200000; ++round) {
    std::string line = "+1 1:0.5 2:-3.25e-2\t17:1 108:0.123456789 2000:12345.678 ";
    for (int i = 0; i < round % 5; ++i) {
      const std::size_t place = random() % line.size();
      const char c = characters[random() % characters.size()];
      switch (random() % 3) {
        case 0:
          line[place] = c;
          break;
        case 1:
          line.insert(place, 1, c);
          break;
        default:
          line.erase(place, 1 + random() % 3);
      }
    }
    expectLikeReference(line);
  }
}

}  // namespace
