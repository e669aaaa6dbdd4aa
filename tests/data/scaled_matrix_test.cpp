// Scaled copies of host matrices.
#include <gtest/gtest.h>

#include "base/errors.h"
#include "support/host_vectors.h"
#include "support/matrices.h"
#include "support/temp_file.h"

namespace {

using zeltest::hostVector;
using zeltest::Matrix;
using zeltest::Storage;
using zeltest::StoredMatrix;
using zeltest::Table;

Table scaledTable(Table table, zel::Interval range, const std::vector<zel::Interval>& bounds) {
  for (auto& row : table)
    for (std::size_t j = 0; j < row.size() && j < bounds.size(); ++j) {
      const double spread = bounds[j].upper - bounds[j].lower;
      row[j] = spread == 0 ? range.lower
                           : (row[j] - bounds[j].lower) * (range.upper - range.lower) / spread +
                                 range.lower;
    }
  return table;
}

// Stored without zeros and with ascending columns.
void expectTidyRows(const Matrix& matrix) {
  for (std::uint64_t i = 0; i < matrix.rows(); ++i) {
    int previous = -1;
    for (int k = matrix.rowOffsets()[i]; k < matrix.rowOffsets()[i + 1]; ++k) {
      EXPECT_NE(matrix.values()[k], 0);
      EXPECT_LT(previous, matrix.columnIndices()[k]);
      previous = matrix.columnIndices()[k];
    }
  }
}

class ScaledMatrix : public testing::TestWithParam<Storage> {
 protected:
  void check(const Matrix& matrix, const Table& table, zel::Interval range,
             const std::vector<zel::Interval>& bounds) {
    const auto boundVector = hostVector(bounds);
    const auto copy = matrix.scaledCopy(range, boundVector);
    const Table expected = scaledTable(table, range, bounds);
    EXPECT_EQ(zeltest::tableOf(*copy), expected);
    std::uint64_t nonZeros = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      double norm = 0;
      for (const double v : expected[i]) norm += v * v;
      EXPECT_DOUBLE_EQ(copy->rowNorms()[i], norm);
      nonZeros += expected[i].size() - static_cast<std::uint64_t>(
                                           std::count(expected[i].begin(), expected[i].end(), 0.0));
    }
    const bool dense = GetParam() == Storage::dense;
    EXPECT_EQ(copy->valueCount(), dense ? table.size() * table[0].size() : nonZeros);
    EXPECT_EQ(matrix.scaledValueCount(range, boundVector), copy->valueCount());
    EXPECT_EQ(copy->rowIds().size(), 0u);
    if (!dense) expectTidyRows(*copy);
  }
};

TEST_P(ScaledMatrix, HoldsWhatTheRuleGives) {
  const StoredMatrix stored(GetParam(), 17, 9, 3);
  zelsvm::HostVector<zel::Interval> collected(9);
  stored.matrix->collectBounds(collected);
  const std::vector<zel::Interval> bounds = zeltest::valuesOf(collected);
  std::vector<zel::Interval> longer = bounds;
  longer.push_back({1, 2});
  const std::vector<zel::Interval> shorter(bounds.begin(), bounds.begin() + 5);
  for (const zel::Interval range :
       {zel::Interval{0, 1}, zel::Interval{-1, 1}, zel::Interval{2, 5}, zel::Interval{-3, 0}})
    for (const auto& chosen :
         {bounds, longer, shorter, std::vector<zel::Interval>{},
          std::vector<zel::Interval>(9, {4, 4}), std::vector<zel::Interval>(9, {0, 8})})
      check(*stored.matrix, stored.table, range, chosen);
  const auto subset = stored.matrix->subset(zeltest::indexList({8, 2, 2}));
  check(*subset, {stored.table[8], stored.table[2], stored.table[2]}, {-1, 1}, bounds);
}

INSTANTIATE_TEST_SUITE_P(Storages, ScaledMatrix,
                         testing::Values(Storage::dense, Storage::sorted, Storage::messy,
                                         Storage::full),
                         [](const auto& test) { return nameOf(test.param); });

// 20,000 rows of a million columns: only stored entries may cost anything.
TEST(SparseMatrix, ScalesAMillionColumnsWithoutVisitingThem) {
  constexpr std::uint64_t rows = 20000;
  constexpr std::uint64_t cols = 1000000;
  std::vector<double> values(rows);
  std::vector<int> columns(rows);
  std::vector<int> offsets{0};
  for (std::uint64_t i = 0; i < rows; ++i) {
    values[i] = static_cast<double>(1 + i % 4);
    columns[i] = static_cast<int>(i * 7919 % cols);
    offsets.push_back(static_cast<int>(i + 1));
  }
  const auto matrix =
      zelmag::createMatrix<double>(values.data(), columns.data(), offsets.data(), cols, rows);
  zelsvm::HostVector<zel::Interval> bounds(cols);
  matrix->collectBounds(bounds);
  const auto scaled = matrix->scaledCopy({0, 2}, bounds);
  EXPECT_EQ(scaled->valueCount(), rows);
  for (std::uint64_t i = 0; i < rows; ++i) ASSERT_EQ(scaled->values()[i], 2) << i;
}

TEST(SparseMatrix, RefusesMoreValuesThanItsOffsetsCount) {
  std::vector<double> values(1 << 20, 1.0);
  std::vector<int> columns(1 << 20, 0);
  std::vector<int> offsets{0, 1 << 20};
  const auto matrix =
      zelmag::createMatrix<double>(values.data(), columns.data(), offsets.data(), 1, 1);
  const auto selection = zeltest::indexList(std::vector<unsigned long long>(2048, 0));
  EXPECT_EQ(zeltest::failureOf<zel::RuntimeException>([&] { matrix->subset(selection); }),
            "The sparse data hold more than 2147483647 values.");
}

}  // namespace
