// However a file is cut into parts, it is read as if it were one.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "files/read_data.h"
#include "support/temp_file.h"
#include "support/thread_limit.h"
#include "support/warning_log.h"

namespace {

constexpr std::uint64_t uncut = std::uint64_t{1} << 40;

struct Reading {
  std::string failure;
  std::vector<std::string> warnings;
  std::uint64_t cols = 0;
  std::vector<double> values, leading;
  std::vector<int> columns, offsets, classSizes;
  bool operator==(const Reading&) const = default;
};

template <typename Vector>
auto listOf(Vector& vector) {
  return std::vector(vector.data(), vector.data() + vector.size());
}

Reading read(const std::string& path, bool dense, std::uint64_t partLength) {
  Reading result;
  zeltest::WarningLog log;
  const auto reader = zelsvm::createReader<double>(path, 1, dense);
  reader->setPartLength(partLength);
  result.failure = zeltest::failureOf([&] { reader->read(); });
  if (const auto place = result.failure.find(path); place != std::string::npos)
    result.failure.replace(place, path.size(), "of the test");
  result.warnings = log.sentences;
  if (!result.failure.empty()) return result;
  result.cols = reader->cols();
  result.values = listOf(reader->values());
  result.leading = listOf(reader->leading());
  result.classSizes = reader->header().classSizes;
  if (dense) return result;
  auto& sparse = dynamic_cast<zelsvm::SparseFileReader<double>&>(*reader);
  result.columns = listOf(sparse.columnIndices());
  result.offsets = listOf(sparse.rowOffsets());
  return result;
}

// Readings of each kind: told apart by what failed or whether something was warned of.
using Kinds = std::map<std::string, int>;

void compare(const std::string& text, const std::vector<std::uint64_t>& partLengths, Kinds& kinds) {
  const zeltest::TempFile file(text);
  for (const bool dense : {false, true}) {
    const Reading whole = read(file.path(), dense, uncut);
    ++kinds[whole.failure.substr(0, whole.failure.find(':'))];
    kinds["warned"] += whole.warnings.empty() ? 0 : 1;
    for (const std::uint64_t length : partLengths)
      ASSERT_TRUE(read(file.path(), dense, length) == whole) << text << '\n' << length << dense;
  }
}

const std::string model =
    "SvmType: smo-C-classification\nKernelType: linear\nNrClass: 2\nTotalSV: 6\nRho: 0.5\n"
    "Labels: 1 2\nNrSV: 4 2\nSV:\n";

// Lines as they should be and as they should not, in every order.
TEST(FileParts, GiveTheSameResultsWarningsAndFailures) {
  using namespace std::string_literals;
  const std::vector<std::string> good = {"1 1:0.5 3:-1", "-1 2:4 ",  "1\t1:1e-3 2:7\r", "",
                                         " \r",          "2 4:1 1:2"};
  const std::vector<std::string> odd = {
      "cat 1:1", "2x 1:2y",     "5",         "# 3:1 remark", "1 1:2 7", "1 7:1 3:1 7:2", "1 4x:1",
      "1 2 7:3", "1 1:2 2:3:4", "1:0.5 2:1", "1 0:2 1:1",    "1 0:2",   "1 1:2\0"s};
  std::mt19937 random(11);
  Kinds kinds;
  for (int round = 0; round < 1500; ++round) {
    std::string text = round % 5 == 1 ? model : "";
    if (round % 7 == 1) text = "\xEF\xBB\xBF" + text;
    const auto oddShare = random() % 8;
    for (auto lines = random() % 12 + 1; lines > 0; --lines) {
      const auto& list = random() % 16 < oddShare ? odd : good;
      text += list[random() % list.size()];
      if (lines > 1 || round % 3 != 0) text += '\n';
    }
    compare(text, {1, random() % 60 + 2}, kinds);
  }
  for (const auto& [kind, count] : kinds) EXPECT_GT(count, 30) << kind;
  EXPECT_EQ(kinds.size(), 7u);
}

// Long enough for threads to share the parts; a line is longer than any part, and the last of
// several faults comes first.
TEST(FileParts, AreReadSideBySide) {
  std::string longLine = "3";
  for (int j = 1; j <= 400; ++j) longLine += ' ' + std::to_string(j) + ":0.250000000000000";
  std::vector<std::string> lines(6000, "1 1:0.5 2:-1 7:3 9:12345.678");
  lines[2000] = lines[4000] = longLine;
  lines[100] = "cat 1:1";
  lines[5000] = "dog 1:1 1:2";
  const auto joined = [&] {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
  };
  Kinds kinds;
  const std::vector<std::uint64_t> lengths = {700, 5000, 100000};
  compare(joined(), lengths, kinds);
  for (const auto& [place, fault] : std::vector<std::pair<std::size_t, const char*>>{
           {5999, "1:2"}, {4500, "1 2:1 0:3 1:1"}, {3000, "1:2 2:2"}, {0, "1 0:1 2:2"}}) {
    lines[place] = fault;
    compare(joined(), lengths, kinds);
  }
  EXPECT_EQ(kinds.at("warned"), 2);
  EXPECT_EQ(kinds.size(), 4u);
}

}  // namespace
