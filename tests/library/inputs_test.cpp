// Samples in every layout that the library takes: the same numbers are the same samples.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <zelsvm/zelsvm.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "support/samples.h"
#include "support/temp_file.h"

namespace {

using zelsvm::Model;
using zelsvm::Parameters;
using zelsvm::Table;
using zeltest::Samples;

// Numbers in memory that ends the process when it is written.
template <typename Number>
class ReadOnly {
 public:
  template <typename Source>
  explicit ReadOnly(const std::vector<Source>& source)
      : count(source.size()), bytes(count * sizeof(Number)) {
    void* const memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    first = static_cast<Number*>(memory);
    std::transform(source.begin(), source.end(), first,
                   [](Source v) { return static_cast<Number>(v); });
    mprotect(first, bytes, PROT_READ);
  }
  ReadOnly(const ReadOnly&) = delete;
  ReadOnly& operator=(const ReadOnly&) = delete;
  ~ReadOnly() { munmap(first, bytes); }

  [[nodiscard]] const Number* data() const { return first; }
  [[nodiscard]] std::span<const Number> all() const { return {first, count}; }

 private:
  std::size_t count;
  std::size_t bytes;
  Number* first;
};

// Each value at places[i * cols + j] of so many numbers, the others of which are no numbers.
std::vector<double> spread(const Samples& samples, std::size_t size, const auto& placeOf) {
  std::vector<double> numbers(size, std::numeric_limits<double>::quiet_NaN());
  for (std::size_t i = 0; i < samples.rows(); ++i)
    for (std::size_t j = 0; j < samples.cols; ++j) numbers[placeOf(i, j)] = samples.row(i)[j];
  return numbers;
}

// What the layouts must agree in.
struct Results {
  std::vector<double> values;
  std::vector<double> probabilities;
  std::vector<double> crossValidated;
  bool operator==(const Results&) const = default;
};

class LayoutsTest : public testing::Test {
 protected:
  LayoutsTest() {
    // Single precision holds these, and products are exact in any order.
    for (double& value : samples.values) value = std::round(8 * value) / 8;
    expected = resultsOf(plain());
  }

  [[nodiscard]] zelsvm::Samples plain() const {
    return zelsvm::Samples::dense(samples.values, samples.cols);
  }

  // Trained on these and tested with the plain ones, and the other way round.
  [[nodiscard]] Results resultsOf(const zelsvm::Samples& rows) const {
    Results results;
    for (const Parameters& parameters :
         {Parameters{.randomSeed = 3},
          Parameters{.probability = true, .randomSeed = 3, .featureScale = {-1, 1}}}) {
      const Model model = zelsvm::train(rows, samples.labels, parameters);
      const Model other = zelsvm::train(plain(), samples.labels, parameters);
      for (const auto& found : {model.predict(plain(), parameters.probability),
                                other.predict(rows, parameters.probability)}) {
        results.values.insert(results.values.end(), found.decisionValues.begin(),
                              found.decisionValues.end());
        results.probabilities.insert(results.probabilities.end(), found.probabilities.begin(),
                                     found.probabilities.end());
      }
      const auto validated = zelsvm::crossValidate(rows, samples.labels, parameters, 3);
      results.crossValidated.insert(results.crossValidated.end(), validated.predictions.begin(),
                                    validated.predictions.end());
    }
    return results;
  }

  void expectSame(const char* layout, const zelsvm::Samples& rows) const {
    EXPECT_EQ(rows.rows(), samples.rows()) << layout;
    EXPECT_EQ(rows.features(), samples.cols) << layout;
    EXPECT_TRUE(resultsOf(rows) == expected) << layout;
  }

  template <typename Number>
  void expectTables() const {
    const std::size_t n = samples.rows();
    const std::size_t m = samples.cols;
    const auto signedOf = [](std::size_t count) { return static_cast<std::ptrdiff_t>(count); };
    const ReadOnly<Number> byRows(samples.values);
    expectSame("rows", zelsvm::Samples::dense(Table(byRows.data(), n, m)));
    const ReadOnly<Number> byColumns(
        spread(samples, n * m, [n](std::size_t i, std::size_t j) { return j * n + i; }));
    expectSame("columns", zelsvm::Samples::dense(Table(byColumns.data(), n, m, 1, signedOf(n))));
    const ReadOnly<Number> gaps(spread(samples, 2 * n * (m + 3), [m](std::size_t i, std::size_t j) {
      return 2 * i * (m + 3) + j;
    }));
    expectSame("gaps", zelsvm::Samples::dense(Table(gaps.data(), n, m, 2 * signedOf(m + 3), 1)));
    const ReadOnly<Number> reversed(
        spread(samples, 2 * n * m,
               [n, m](std::size_t i, std::size_t j) { return 2 * (n * m - 1 - (i * m + j)); }));
    expectSame("reversed", zelsvm::Samples::dense(Table(reversed.data() + 2 * (n * m - 1), n, m,
                                                        -2 * signedOf(m), -2)));
  }

  template <typename Number, typename Column, typename Offset>
  void expectArrays() const {
    const zeltest::CsrArrays csr = zeltest::compressed(samples);
    const ReadOnly<Number> values(csr.values);
    const ReadOnly<Column> columns(csr.columns);
    const ReadOnly<Offset> offsets(csr.offsets);
    expectSame("sparse", zelsvm::Samples::csr({.values = values.all(),
                                               .columns = columns.all(),
                                               .rowOffsets = offsets.all(),
                                               .features = samples.cols}));
  }

  Samples samples = zeltest::classSamples(60, 300, {2, -1, 5}, 4);
  Results expected;
};

TEST_F(LayoutsTest, StridesAndPrecisionDoNotMatter) {
  expectTables<double>();
  expectTables<float>();
}

TEST_F(LayoutsTest, TypesOfSparseArraysDoNotMatter) {
  using Narrow = std::int32_t;
  using Wide = std::int64_t;
  expectArrays<double, Narrow, Narrow>();
  expectArrays<double, Wide, Narrow>();
  expectArrays<double, Narrow, Wide>();
  expectArrays<float, Narrow, Narrow>();
  expectArrays<float, Wide, Wide>();
}

// A model of sparse samples may list the features in use: dense ones are moved to its columns.
TEST(LibraryInputs, TablesMeetModelsOfOtherWidths) {
  const std::vector<double> values{1, 2, 3, 1, 4, 2};
  const std::vector<int> columns{0, 2500, 1, 2500, 2500, 0};
  const std::vector<int> offsets{0, 2, 4, 6};
  const std::vector<double> targets{1, 2, 4};
  const Model listed =
      zelsvm::train(zelsvm::Samples::csr(values, columns, offsets, 9000), targets,
                    {.formulation = zelsvm::Formulation::epsilonRegression, .gamma = 0.5});
  const std::vector<float> test{1, 2, 0.5F, 3};
  const std::vector<double> same(test.begin(), test.end());
  EXPECT_EQ(
      listed.predict(zelsvm::Samples::dense(Table(test.data(), 2, 2, 1, 2))).values,
      listed.predict(zelsvm::Samples::dense(std::vector{same[0], same[2], same[1], same[3]}, 2))
          .values);
}

TEST(LibraryInputs, BorrowedNumbersAreLookedAtAndOthersCopied) {
  std::vector<float> numbers{1, 2, 3, 4, 5, 6};
  std::vector<std::int64_t> wide{0, 1, 2, 3};
  std::vector<int> columns{0, 0, 0};
  const std::vector<double> targets{1, 2, 3};
  const auto rows = zelsvm::Samples::dense(Table(numbers.data(), 3, 1, 2, 1));
  const auto copied = zelsvm::Samples::csr({.values = std::span(numbers).first(3),
                                            .columns = columns,
                                            .rowOffsets = wide,
                                            .features = 1});
  const Model model = zelsvm::train(
      rows, targets,
      {.formulation = zelsvm::Formulation::epsilonRegression, .kernel = zelsvm::Kernel::linear});
  const auto before = model.predict(copied).values;
  const auto seen = model.predict(rows).values;
  numbers = {9, 9, 9, 9, 9, 9};
  wide = {0, 0, 0, 0};
  EXPECT_EQ(model.predict(copied).values, before);
  EXPECT_GT(model.predict(rows).values[0], seen[0] + 1);
}

TEST(LibraryInputs, WhatCannotBeReadIsRefused) {
  const auto expectRefusal = [](const std::string& message, const auto& call) {
    EXPECT_EQ(zeltest::failureOf<zelsvm::AppException>(call), message);
  };
  const float number = 1;
  for (const std::size_t rows : {0, 1})
    expectRefusal("Dense samples must be whole rows of features, at least one.",
                  [&] { zelsvm::Samples::dense(Table(&number, rows, 1 - rows)); });
  const std::vector<float> values{1};
  const auto expectBadArrays = [&](const std::string& message, std::vector<std::int64_t> columns,
                                   std::vector<std::int64_t> offsets,
                                   zelsvm::Compressed order = zelsvm::Compressed::rows) {
    expectRefusal(message, [&] {
      zelsvm::Samples::csr({.values = values,
                            .columns = columns,
                            .rowOffsets = offsets,
                            .features = 2,
                            .order = order});
    });
  };
  expectBadArrays("Compressed columns are not read: turn them into compressed rows first.", {0},
                  {0, 1}, zelsvm::Compressed::columns);
  const std::int64_t turn = std::int64_t{1} << 32;
  for (const std::int64_t column : {turn, -turn, std::int64_t{-1}, std::int64_t{2}})
    expectBadArrays("A column of the sparse rows lies outside of the features.", {column}, {0, 1});
  expectBadArrays("Sparse samples of more than 2147483647 values are not supported.", {0},
                  {0, turn + 1});
  expectBadArrays("The row offsets do not fit the values and columns of the sparse rows.", {0},
                  {-turn, 1});
}

}  // namespace
