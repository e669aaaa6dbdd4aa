#include "files/row_output.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

// Around the length of a piece and of all pieces that are held, and rows longer than both.
TEST(RowOutput, KeepsTheOrderOfRowsOfAnyLength) {
  for (const std::uint64_t rowNumbers : {1, 3, 300, 2048, 2049, 16384, 16385, 50000})
    for (const std::uint64_t rows : {0, 1, 2, 16, 17, 2048, 2049, 32768, 32769, 70000}) {
      if (rows * rowNumbers > 1000000) continue;
      std::string expected;
      for (std::uint64_t row = 0; row < rows; ++row)
        for (std::uint64_t i = 0; i < rowNumbers; ++i) expected += std::to_string(row) + ' ';
      std::string text = "head ";
      zel::TextOutput output(text);
      zelsvm::putRows(rows, rowNumbers, output, [&](std::uint64_t row, zel::TextOutput& target) {
        for (std::uint64_t i = 0; i < rowNumbers; ++i) target.put(row).put(" ");
      });
      output.flush();
      ASSERT_TRUE(text == "head " + expected) << rows << ' ' << rowNumbers;
    }
}

TEST(RowOutput, PassesFailuresOn) {
  std::string text;
  zel::TextOutput output(text);
  const auto failing = [](std::uint64_t row, zel::TextOutput& /*target*/) {
    if (row == 30000) throw std::bad_alloc{};
  };
  EXPECT_THROW(zelsvm::putRows(40000, 1, output, failing), std::bad_alloc);
}

}  // namespace
