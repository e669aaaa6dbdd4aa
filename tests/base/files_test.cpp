#include "base/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/output/text_output.h"
#include "support/temp_file.h"

namespace {

using zel::AppException;
using zeltest::failureOf;
using zeltest::TempFile;

std::vector<std::string> linesOf(const std::string& text) {
  const TempFile input(text);
  zel::CTextFile file(zel::FileMode::read);
  file.open(input.path());
  std::vector<std::string> lines;
  for (std::string_view line; file.readLine(line);) lines.emplace_back(line);
  return lines;
}

TEST(TextFile, SplitsLinesAtBothLineEnds) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(linesOf(""), Lines());
  EXPECT_EQ(linesOf("\n"), Lines({""}));
  EXPECT_EQ(linesOf("a"), Lines({"a"}));
  EXPECT_EQ(linesOf("a\n\r\nb\r\nc\rd\r\r\n"), Lines({"a", "", "b", "c\rd\r"}));
}

TEST(TextFile, PassesOverAByteOrderMarkAtTheStart) {
  using Lines = std::vector<std::string>;
  const std::string mark = "\xEF\xBB\xBF";
  EXPECT_EQ(linesOf(mark + "a\n" + mark + "b"), Lines({"a", mark + "b"}));
  EXPECT_EQ(linesOf(mark), Lines());
  EXPECT_EQ(linesOf(mark.substr(0, 2)), Lines({mark.substr(0, 2)}));
}

TEST(TextFile, HandsOutLinesThatCrossOrExceedItsBlocks) {
  std::string text;
  std::vector<std::string> expected;
  for (const std::size_t length :
       {262143u, 0u, 262144u, 1u, 262145u, 10000000u, 3u, 524288u, 100u}) {
    expected.emplace_back(length, static_cast<char>('a' + expected.size()));
    text += expected.back() + "\n";
  }
  for (int i = 0; i < 100000; ++i)
    text += (expected.emplace_back("line " + std::to_string(i))) + "\r\n";
  EXPECT_TRUE(linesOf(text) == expected);
}

TEST(TextFile, RefusesWhatIsNoTextFile) {
  const std::string folder = std::filesystem::temp_directory_path();
  zel::CTextFile file(zel::FileMode::read);
  EXPECT_EQ(failureOf<AppException>([&] { file.open(""); }), "missing file path.");
  EXPECT_EQ(failureOf<AppException>([&] { file.open(folder); }), "failed to open " + folder + ".");
  EXPECT_EQ(failureOf<AppException>([&] { file.open("/no/such/file"); }),
            "failed to open /no/such/file.");
  EXPECT_FALSE(file.open("/no/such/file", true));
  const std::string binary = std::string(300000, 'x') + '\0' + "y";
  EXPECT_NE(failureOf<AppException>([&] { linesOf(binary); }).find("NUL character"),
            std::string::npos);
  zel::CTextFile memory(zel::FileMode::read);
  memory.open("/proc/self/mem");
  std::string_view line;
  EXPECT_EQ(failureOf<AppException>([&] { memory.readLine(line); }),
            "The file /proc/self/mem cannot be read.");
}

TEST(TextFile, TellsAtTheLatestOnCloseThatTheDiskIsFull) {
  for (const std::size_t length : {1u, 10000000u}) {
    zel::CTextFile file(zel::FileMode::write);
    file.open("/dev/full");
    EXPECT_EQ(failureOf<AppException>([&] {
                file.write(std::string(length, 'x').c_str(), length);
                file.close();
              }),
              "failed writing to file: /dev/full");
  }
}

TEST(TextOutput, WritesPiecesOfAnyLengthInOrder) {
  const TempFile target("to be truncated");
  std::string expected;
  zel::CTextFile file(zel::FileMode::write);
  file.open(target.path());
  zel::TextOutput output(file);
  for (int i = 0; i < 3000; ++i) {
    const std::string text(static_cast<std::size_t>(i) * 7 % 100, 'x');
    output.put(text).put(i).put(" ").put(i / 8.0).put(std::uint64_t{1} << (i % 64));
    expected += text + std::to_string(i) + " ";
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%g%lu", i / 8.0, 1ul << (i % 64));
    expected += numbers;
    if (i % 1000 == 0) {
      expected.append(20000, 'y');
      output.put(std::string(20000, 'y'));
    }
  }
  output.flush();
  file.close();
  EXPECT_TRUE(target.text() == expected);
}

}  // namespace
