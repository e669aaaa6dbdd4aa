// Matrices against plain tables: contents, subsets, bounds.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"
#include "data/bounds.h"
#include "support/host_vectors.h"
#include "support/matrices.h"
#include "support/temp_file.h"

namespace {

using zeltest::failureOf;
using zeltest::indexList;
using zeltest::Matrix;
using zeltest::Storage;
using zeltest::StoredMatrix;
using zeltest::Table;
using zeltest::tableOf;
using zeltest::valuesOf;

constexpr double garbage = std::numeric_limits<double>::quiet_NaN();

class MatrixTest : public testing::TestWithParam<Storage> {
 protected:
  StoredMatrix make(std::uint64_t rows = 23, std::uint64_t cols = 9, unsigned seed = 1) {
    return {GetParam(), rows, cols, seed};
  }
};

TEST_P(MatrixTest, LooksAtTheArraysItIsGiven) {
  const StoredMatrix stored = make();
  const Matrix& matrix = *stored.matrix;
  const bool dense = GetParam() == Storage::dense;
  EXPECT_EQ(matrix.values(), stored.values.data());
  EXPECT_EQ(matrix.columnIndices(), dense ? nullptr : stored.columns.data());
  EXPECT_EQ(matrix.rowOffsets(), dense ? nullptr : stored.offsets.data());
  EXPECT_EQ(matrix.valueCount(), stored.values.size());
  EXPECT_EQ(valuesOf(matrix.rowNorms()), stored.norms);
  EXPECT_EQ(matrix.rowIds().size(), 0u);
  EXPECT_EQ(tableOf(matrix), stored.table);
  std::vector<double> target(matrix.cols(), 7.5);
  matrix.copyRow(target.data(), 4, false);
  for (std::size_t j = 0; j < target.size(); ++j)
    EXPECT_TRUE(target[j] == stored.table[4][j] || (stored.table[4][j] == 0 && target[j] == 7.5));
}

TEST_P(MatrixTest, SubsetsCarryRowsNormsAndIds) {
  const StoredMatrix stored = make();
  const auto subset = stored.matrix->subset(indexList({22, 5, 5, 0, 13}));
  const auto again = subset->subset(indexList({4, 1, 0}));
  EXPECT_EQ(valuesOf(subset->rowIds()), (std::vector<unsigned long long>{22, 5, 5, 0, 13}));
  EXPECT_EQ(valuesOf(again->rowIds()), (std::vector<unsigned long long>{13, 5, 22}));
  const Table& t = stored.table;
  EXPECT_EQ(tableOf(*subset), (Table{t[22], t[5], t[5], t[0], t[13]}));
  EXPECT_EQ(tableOf(*again), (Table{t[13], t[5], t[22]}));
  EXPECT_EQ(valuesOf(again->rowNorms()),
            (std::vector<double>{stored.norms[13], stored.norms[5], stored.norms[22]}));
  EXPECT_EQ(again->isSparse(), GetParam() != Storage::dense);
  EXPECT_EQ(failureOf<zel::AppException>([&] { stored.matrix->subset(indexList({})); }),
            "Invalid zero data dimensions.");
}

TEST_P(MatrixTest, CollectsBoundsOfEveryColumn) {
  const StoredMatrix stored = make();
  for (const std::uint64_t size : {9, 12, 4, 0}) {
    std::vector<std::pair<double, double>> expected;
    for (std::size_t j = 0; j < size; ++j) {
      std::vector<double> column(1);
      if (j < 9) column.clear();
      for (const auto& row : stored.table)
        if (j < 9) column.push_back(row[j]);
      const auto [low, high] = std::minmax_element(column.begin(), column.end());
      expected.emplace_back(*low, *high);
    }
    zelsvm::HostVector<zel::Interval> bounds(size);
    stored.matrix->collectBounds(bounds);
    EXPECT_EQ(zeltest::pairsOf(bounds), expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Storages, MatrixTest,
                         testing::Values(Storage::dense, Storage::sorted, Storage::messy,
                                         Storage::full),
                         [](const auto& test) { return nameOf(test.param); });

// NaN moves a bound only as a column's first value, and an absent entry is a value like any other.
TEST(Matrix, BoundsSeeNanAlikeInBothKinds) {
  std::vector<double> dense = {garbage, 0, 1, 0, garbage, 2, -5, 3, 0};
  std::vector<double> values = {garbage, 1, garbage, 2, -5, 3};
  std::vector<int> columns = {0, 2, 1, 2, 0, 1};
  std::vector<int> offsets = {0, 2, 4, 6};
  for (const bool sparse : {false, true}) {
    const auto matrix =
        zelmag::createMatrix<double>(sparse ? values.data() : dense.data(), columns.data(),
                                     sparse ? offsets.data() : nullptr, 3, 3);
    zelsvm::HostVector<zel::Interval> bounds(3);
    matrix->collectBounds(bounds);
    EXPECT_TRUE(std::isnan(bounds[0].lower) && std::isnan(bounds[0].upper));
    EXPECT_EQ(bounds[1].lower, 0);
    EXPECT_EQ(bounds[1].upper, 3);
    EXPECT_EQ(bounds[2].lower, 0);
    EXPECT_EQ(bounds[2].upper, 2);
  }
}

}  // namespace
