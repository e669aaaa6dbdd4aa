// Products of rows with blocks of rows, whatever the storage and the instruction set.
#include "platform/host/products/block_products.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "platform/host/products/csr_sweeps.h"
#include "support/isa_tables.h"
#include "support/matrices.h"
#include "support/thread_limit.h"

namespace {

using zelsvm::BlockProducts;
using zelsvm::DenseRows;
using zeltest::Storage;
using zeltest::StoredMatrix;
using zeltest::Table;
using Numbers = std::vector<double>;

constexpr double garbage = std::numeric_limits<double>::quiet_NaN();

double dot(const Numbers& u, const Numbers& v) {
  return std::inner_product(u.begin(), u.end(), v.begin(), 0.0);
}

// Products of all rows of left with the given rows, stride elements apart; nothing else is written.
void expectProducts(const Table& left, const Table& right, const Numbers& products,
                    std::uint64_t stride) {
  for (std::size_t k = 0; k < right.size(); ++k)
    for (std::size_t i = 0; i < stride; ++i) {
      const double product = products[k * stride + i];
      if (i < left.size())
        ASSERT_NEAR(product, dot(left[i], right[k]), 1e-13) << i << ", " << k;
      else
        ASSERT_TRUE(std::isnan(product)) << i << ", " << k;
    }
}

Table rowsOf(const Table& table, std::uint64_t first, std::uint64_t count) {
  const auto begin = table.begin() + static_cast<std::ptrdiff_t>(first);
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

class BlockProductsTest : public testing::TestWithParam<Storage> {};

// The block's rows may be longer than this matrix's and come from a matrix stored otherwise.
TEST_P(BlockProductsTest, AreThoseOfTheStoredRows) {
  const StoredMatrix stored(GetParam(), 23, 9, 1);
  BlockProducts products(*stored.matrix);
  for (const Storage storage : {GetParam(), Storage::dense, Storage::messy})
    for (const std::uint64_t width : {9, 14}) {
      const StoredMatrix other(storage, 21, width, 2);
      DenseRows rows(*other.matrix);
      Table right = other.table;
      for (auto& row : right) row.resize(9);
      for (const std::uint64_t stride : {23, 29})
        for (const std::uint64_t count : {1, 2, 7, 8, 9, 20}) {
          Numbers result(stride * count, garbage);
          products.multiply(rows.rows(1, count), width, result.data(), stride, count);
          expectProducts(stored.sums, rowsOf(right, 1, count), result, stride);
        }
    }
}

TEST_P(BlockProductsTest, LayOutWindowsOfRows) {
  const StoredMatrix stored(GetParam(), 23, 9, 1);
  DenseRows rows(*stored.matrix);
  for (const auto& [first, count] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
           {0, 1}, {3, 8}, {22, 1}, {0, 23}, {11, 4}}) {
    const double* row = rows.rows(first, count);
    for (const auto& expected : rowsOf(stored.table, first, count)) {
      EXPECT_EQ(Numbers(row, row + 9), expected) << first;
      row += 9;
    }
  }
}

// An absent element meets no infinity, whether or not the rest is computed densely.
TEST_P(BlockProductsTest, AbsentElementsMeetNothing) {
  const StoredMatrix stored(GetParam(), 23, 9, 1);
  BlockProducts products(*stored.matrix);
  Numbers block(18, 1);
  block[2] = std::numeric_limits<double>::infinity();  // a column that some kinds do not store
  Numbers result(46, garbage);
  products.multiply(block.data(), 9, result.data(), 23, 2);
  const bool absent = GetParam() == Storage::sorted || GetParam() == Storage::messy;
  for (std::size_t i = 0; i < 23; ++i) {
    EXPECT_EQ(std::isfinite(result[i]), absent) << i;
    EXPECT_NEAR(result[23 + i], dot(stored.sums[i], Numbers(9, 1)), 1e-13);
  }
}

INSTANTIATE_TEST_SUITE_P(Storages, BlockProductsTest,
                         testing::Values(Storage::dense, Storage::sorted, Storage::messy,
                                         Storage::full),
                         [](const auto& test) { return nameOf(test.param); });

Numbers randomNumbers(std::size_t count, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Numbers numbers(count);
  for (double& number : numbers) number = uniform(generator);
  return numbers;
}

TEST(BlockProducts, HaveEqualBitsForAnyNumberOfThreads) {
  constexpr std::uint64_t m = 3001;
  constexpr std::uint64_t k = 203;
  Numbers values = randomNumbers(m * k, 1);
  std::vector<int> offsets(m + 1);
  std::vector<int> columns;
  for (std::uint64_t i = 0; i < m; ++i) {
    for (std::uint64_t j = i % 5; j < k; j += 3) columns.push_back(static_cast<int>(j));
    offsets[i + 1] = static_cast<int>(columns.size());
  }
  const Numbers block = randomNumbers(21 * k, 2);
  for (const bool sparse : {false, true}) {
    const auto matrix = zelmag::createMatrix<double>(values.data(), columns.data(),
                                                     sparse ? offsets.data() : nullptr, k, m);
    BlockProducts products(*matrix);
    for (const std::uint64_t count : {1, 21}) {
      Numbers results[2];
      for (const int threads : {1, 2}) {
        const zeltest::ThreadLimit limit(threads);
        results[threads - 1].resize(m * count);
        products.multiply(block.data(), k, results[threads - 1].data(), m, count);
        EXPECT_EQ(omp_get_max_threads(), threads) << "the BLAS has changed it";
      }
      EXPECT_EQ(results[0], results[1]) << sparse << count;
    }
  }
}

class CsrSweeps : public testing::TestWithParam<zeltest::IsaTables> {};

TEST_P(CsrSweeps, AgreeToAFewUlp) {
  const int rows = 200;
  std::vector<int> offsets{0};
  std::vector<int> columns;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < i % 23; ++j) columns.push_back((i * 7 + j * 13) % 50);
    offsets.push_back(static_cast<int>(columns.size()));
  }
  const Numbers values = randomNumbers(columns.size(), 1);
  const Numbers panel = randomNumbers(50 * zelsvm::panelColumns, 2);
  const zelsvm::CsrRows all{offsets.data(), columns.data(), values.data(), 0, rows};
  Numbers C(rows * 5, garbage);
  Numbers y(rows, garbage);
  GetParam().csr->timesPanel(all, panel.data(), 5, C.data(), rows);
  GetParam().csr->timesVector(all, panel.data(), y.data());
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t c = 0; c < 6; ++c) {  // the last one: with the panel's beginning as a vector
      double sum = 0;
      double size = 0;
      for (auto p = static_cast<std::size_t>(offsets[i]);
           p < static_cast<std::size_t>(offsets[i + 1]); ++p) {
        const auto j = static_cast<std::size_t>(columns[p]);
        const double term = values[p] * panel[c < 5 ? j * zelsvm::panelColumns + c : j];
        sum += term;
        size += std::abs(term);
      }
      ASSERT_NEAR(c < 5 ? C[i + c * rows] : y[i], sum, 1e-15 * size) << "row " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(InstructionSets, CsrSweeps, testing::ValuesIn(zeltest::runnableTables()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
