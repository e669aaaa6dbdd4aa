#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>
#include <string>
#include <vector>

#include "base/errors.h"
#include "files/dense_file_reader.h"
#include "files/sparse_file_reader.h"
#include "support/temp_file.h"

namespace {

using zel::AppException;
using zel::RuntimeException;
using zelsvm::DenseFileReader;
using zelsvm::SparseFileReader;
using zeltest::failureOf;
using zeltest::TempFile;

constexpr const char* loadingError = "Error in loading SVM numeric values";
constexpr const char* noData = "No proper data is found in input file";
constexpr const char* underflow = "Base index underflow detected in sparse data";

template <typename T>
std::vector<T> listOf(zelsvm::HostVector<T>& vector) {
  return {vector.data(), vector.data() + vector.size()};
}

// What was read, as a full matrix; a failure's text instead.
struct Content {
  std::uint64_t rows = 0, cols = 0, total = 0;
  std::vector<double> values, leading;
  std::string failure;

  void take(zelsvm::UserFileReader<double>& reader) {
    rows = reader.rows();
    cols = reader.cols();
    total = reader.valueTotal();
    leading = listOf(reader.leading());
  }
  void forgetPath(const std::string& path) {
    if (failure.starts_with(path)) failure.erase(0, path.size());
  }
  bool operator==(const Content&) const = default;
};

Content readDense(const std::string& text, std::uint64_t base = 1) {
  Content content;
  const TempFile file(text);
  content.failure = failureOf([&] {
    DenseFileReader<double> reader(file.path(), base);
    reader.read();
    content.take(reader);
    content.values = listOf(reader.values());
  });
  content.forgetPath(file.path());
  return content;
}

Content readSparse(const std::string& text, std::uint64_t base = 1) {
  Content content;
  const TempFile file(text);
  content.failure = failureOf([&] {
    SparseFileReader<double> reader(file.path(), base);
    reader.read();
    content.take(reader);
    const auto offsets = listOf(reader.rowOffsets());
    const auto columns = listOf(reader.columnIndices());
    content.values.assign(content.rows * content.cols, 0);
    for (std::uint64_t row = 0; row < content.rows; ++row)
      for (int i = offsets.at(row); i < offsets.at(row + 1); ++i)
        content.values.at(row * content.cols +
                          static_cast<std::uint64_t>(columns.at(static_cast<std::size_t>(i)))) =
            reader.values()[static_cast<std::uint64_t>(i)];
  });
  content.forgetPath(file.path());
  return content;
}

TEST(FileReader, ReadsRowsBothWays) {
  struct Case {
    const char* text;
    std::uint64_t base, total;
    Content content;
  };
  using List = std::vector<double>;
  for (const Case& c : {
           Case{"+1 1:0.5 3:-1", 1, 2, {1, 3, 2, List{0.5, 0, -1}, List{1}, ""}},
           Case{"+1 1:0.5 3:-1", 0, 2, {1, 4, 2, List{0, 0.5, 0, -1}, List{1}, ""}},
           Case{"7 2:0 1:3\r\n\r\n \t \r\n-1e1 2:4 \r\n",
                1,
                3,
                {2, 2, 3, List{3, 0, 0, 4}, List{7, -10}, ""}},
           Case{"3\n2abc 1:1\n4 5\n", 1, 1, {1, 1, 1, List{1}, List{2}, ""}},
           Case{"1 2:5 2:7\n", 1, 2, {1, 2, 2, List{0, 7}, List{1}, ""}},
           Case{"1 4x:1 3: 2 9:\n", 1, 2, {1, 4, 2, List{0, 0, 2, 1}, List{1}, ""}},
       }) {
    EXPECT_TRUE(readDense(c.text, c.base) == c.content) << c.text;
    EXPECT_TRUE(readSparse(c.text, c.base) == c.content) << c.text;
  }
}

TEST(FileReader, SparseKeepsEveryPairInFileOrder) {
  const TempFile file("1 5:0 2:5 2:7\n2\n3 1:1\n");
  SparseFileReader<double> reader(file.path(), 1);
  reader.read(8);
  EXPECT_EQ(listOf(reader.values()), (std::vector<double>{0, 5, 7, 1}));
  EXPECT_EQ(listOf(reader.columnIndices()), (std::vector<int>{4, 1, 1, 0}));
  EXPECT_EQ(listOf(reader.rowOffsets()), (std::vector<int>{0, 3, 4}));
  EXPECT_EQ(reader.cols(), 8u);
  EXPECT_FALSE(reader.isModel());
}

TEST(FileReader, RefusesBrokenFiles) {
  struct Case {
    std::string text;
    std::uint64_t base;
    const char* failure;
  };
  for (const Case& c :
       {Case{"", 1, noData}, Case{std::string(1000, '\n'), 1, noData}, Case{"1\n2\n", 0, noData},
        Case{"1 0:2\n", 1, underflow}, Case{"1 1:1\n1 abc:2\n", 1, underflow},
        Case{"1:0.5 2:1\n", 1, loadingError}, Case{"1 1:2\n1:3\n", 1, loadingError},
        Case{"1 1:1\n", 2, "The base index of a data matrix must be 0 or 1 only"}}) {
    EXPECT_EQ(readDense(c.text, c.base).failure, c.failure) << c.text;
    EXPECT_EQ(readSparse(c.text, c.base).failure, c.failure) << c.text;
  }
}

TEST(FileReader, RefusesIndicesThatColumnsOrMemoryCannotHold) {
  const std::string most = "4294967295";
  for (const auto& [index, read] :
       std::vector<std::pair<std::string, std::string>>{{"2147483648", "2147483648"},
                                                        {most, most},
                                                        {"-1", most},
                                                        {"99999999999999999999", most}}) {
    const std::string text = "1 " + index + ":1\n2 1:3\n3 1:4\n";
    EXPECT_EQ(readSparse(text).failure,
              "The feature index " + read + " is too large for sparse data.");
    std::string rows;
    for (int row = 0; row < 100000; ++row) rows += "1 1:1\n";
    EXPECT_EQ(readDense(text + rows).failure,
              "Dense rows up to feature index " + read + " do not fit into memory.");
  }
}

TEST(FileReader, ReadsAMillionSparseColumnsAndTheLargestIndex) {
  const TempFile file("1 1000000:2\n-1 1:1 2147483647:4\n");
  SparseFileReader<double> reader(file.path(), 1);
  reader.read();
  EXPECT_EQ(reader.cols(), 2147483647u);
  EXPECT_EQ(listOf(reader.columnIndices()), (std::vector<int>{999999, 0, 2147483646}));
}

TEST(FileReader, ReadsALineOfAnyLength) {
  std::string text = "5 ";
  const int count = 200000;
  for (int i = 1; i <= count; ++i) text += std::to_string(i) + ":0.5 ";
  const TempFile file(text + "\n" + text);
  SparseFileReader<double> reader(file.path(), 1);
  reader.read();
  EXPECT_EQ(listOf(reader.rowOffsets()), (std::vector<int>{0, count, 2 * count}));
  EXPECT_EQ(reader.columnIndices()[2 * count - 1], count - 1);
}

TEST(FileReader, RefusesFilesThatCannotBeReadTwice) {
  const TempFile place;
  const std::string pipe = place.path() + ".pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {pipe, std::string("/dev/zero")}) {
    SparseFileReader<double> reader(path, 1);
    EXPECT_EQ(failureOf<AppException>([&] { reader.read(); }),
              "The file " + path + " cannot be read twice.");
  }
  std::filesystem::remove(pipe);
}

// The file is replaced between the passes.
template <typename Reader>
class ChangingReader : public Reader {
 public:
  ChangingReader(const std::string& path, std::string later)
      : Reader(path, 1), path(path), later(std::move(later)) {}
  bool loadRows(double* values, int* columns, int* offsets, double* leading) override {
    std::ofstream(path) << later;
    return Reader::loadRows(values, columns, offsets, leading);
  }

 private:
  std::string path;
  std::string later;
};

// Read is what one of the two files holds as a whole, or nothing.
TEST(FileReader, NeverMixesAFileThatChangesBetweenThePasses) {
  const std::string text = "1 1:1 2:2\n2 1:3\n";
  const auto check = [&]<typename Reader>(const std::string& later, Reader*) {
    const TempFile file(text);
    const TempFile after(later);
    ChangingReader<Reader> changing(file.path(), later);
    Reader plain(after.path(), 1);
    const std::string failure = failureOf<RuntimeException>([&] { plain.read(); });
    EXPECT_EQ(failureOf<RuntimeException>([&] { changing.read(); }), failure) << later;
    if (!failure.empty()) return;
    EXPECT_EQ(listOf(changing.values()), listOf(plain.values())) << later;
    EXPECT_EQ(listOf(changing.leading()), listOf(plain.leading())) << later;
    EXPECT_EQ(changing.cols(), plain.cols()) << later;
  };
  for (const char* later : {"", "1 1:1\n2 1:3\n", "1 1:1 2:2\n2 1:3\n3 1:1\n", "1 1:1 2:2 1:3\n",
                            "1 1:1\n2 1:3\n3 1:4\n", "1 1:1 3:2\n2 1:3\n", "1 0:1 2:2\n2 1:3\n",
                            "1 1:1 2:2\n2 1:3 1:4\n"}) {
    check(later, static_cast<SparseFileReader<double>*>(nullptr));
    check(later, static_cast<DenseFileReader<double>*>(nullptr));
  }
}

// Such lines mislead a count that looks at colons and last indices only.
TEST(FileReader, CountsLinesOfUnusualFormExactly) {
  using Case = std::tuple<const char*, std::uint64_t, std::vector<double>>;
  for (const auto& [text, cols, values] :
       {Case{"1 3:1 1:2\n2 2:3\n", 4, {1, 2, 3}}, Case{"1 1:2 2:3:4\n", 3, {2, 3}},
        Case{"1 2 7:3\n2 1:4\n", 3, {3, 4}}, Case{"1 1:2 2:\n2 1:3\n", 2, {2, 3}},
        Case{"1 1: 2 2:3\n", 3, {2, 3}}}) {
    const TempFile file(text);
    SparseFileReader<double> reader(file.path(), 0);
    reader.read();
    EXPECT_EQ(reader.cols(), cols) << text;
    EXPECT_EQ(listOf(reader.values()), values) << text;
  }
  // It has two columns, but for the quick count more than any memory holds.
  std::string text = "1 1 999999999:3\n";
  for (int row = 0; row < 5000; ++row) text += "2 1:4\n";
  EXPECT_EQ(readDense(text, 0).failure, "");
}

TEST(FileReader, BothKindsAgreeOnMutatedFiles) {
  std::mt19937 random(5);
  const std::string_view characters = "0123:: \t\n\r.-ex";
  int readable = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string text = "SvmType: smo-C-classification\nNrClass: 3\nTotalSV: 2\nNrSV: 1 1 0\nSV:\n";
    if (round % 2 == 0) text.clear();
    text += "1 2.5 1:0.5 2:-1 9:3\n-1 3e1 2:7\n";
    for (int i = 0; i < round % 4; ++i) {
      const std::size_t place = random() % text.size();
      if (random() % 2 == 0)
        text.insert(place, 1, characters[random() % characters.size()]);
      else
        text.erase(place, 1);
    }
    const Content sparse = readSparse(text, 0);
    if (sparse.failure.ends_with("is too large for sparse data."))
      continue;  // a dense array would take the memory
    readable += sparse.failure.empty() ? 1 : 0;
    ASSERT_TRUE(sparse == readDense(text, 0)) << text;
  }
  EXPECT_GT(readable, 1000);
}

}  // namespace
