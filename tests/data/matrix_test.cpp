// Host matrices against plain tables: contents, subsets, bounds, products on the device.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

#include "data/temp_file.h"
#include "platform/host/fault_injection.h"
#include "support/host_vectors.h"
#include "support/matrices.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/data/bounds.h"

namespace {

using zel::DeviceVector;
using zeltest::failureOf;
using zeltest::hostVector;
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
    return {context, GetParam(), rows, cols, seed};
  }
  zeltest::LinearAlgebra context;
};

double dot(const std::vector<double>& u, const std::vector<double>& v) {
  return std::inner_product(u.begin(), u.end(), v.begin(), 0.0);
}

DeviceVector<double> garbageVector(std::uint64_t count) {
  return DeviceVector<double>(hostVector(std::vector<double>(count, garbage)));
}

// Products of all rows of left with the given rows, stride elements apart; nothing else is written.
void expectProducts(const Table& left, const Table& right, const std::vector<double>& products,
                    std::uint64_t stride) {
  for (std::size_t k = 0; k < right.size(); ++k)
    for (std::size_t i = 0; i < stride && k * stride + i < products.size(); ++i) {
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
  DeviceVector<double> result(3);
  again->rowProducts(result, 1);
  expectProducts({stored.sums[13], stored.sums[5], stored.sums[22]}, {t[5]}, valuesOf(result), 3);
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
    zelsvm::HostVector<double2> bounds(size);
    stored.matrix->collectBounds(bounds);
    EXPECT_EQ(zeltest::pairsOf(bounds), expected);
  }
}

TEST_P(MatrixTest, MultipliesAllRowsWithOne) {
  const StoredMatrix stored = make();
  for (int pass = 0; pass < 2; ++pass) {
    for (std::uint64_t row = 0; row < 23; ++row) {
      DeviceVector<double> result = garbageVector(25);
      stored.matrix->rowProducts(result, row);
      expectProducts(stored.sums, {stored.table[row]}, valuesOf(result), 25);
    }
    stored.matrix->releaseDevice();
  }
}

TEST_P(MatrixTest, LaysOutWindowsOfRows) {
  const StoredMatrix stored = make();
  for (const auto& [first, count] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
           {0, 1}, {3, 8}, {22, 1}, {0, 23}, {11, 4}}) {
    std::vector<double> expected;
    for (const auto& row : rowsOf(stored.table, first, count))
      expected.insert(expected.end(), row.begin(), row.end());
    std::vector<double> rows = valuesOf(stored.matrix->deviceRows(first, count));
    ASSERT_GE(rows.size(), expected.size());
    rows.resize(expected.size());
    EXPECT_EQ(rows, expected) << first;
    if (first == 22) stored.matrix->releaseDevice();
  }
}

// The block's rows may be longer than this matrix's and come from a matrix stored otherwise.
TEST_P(MatrixTest, MultipliesAllRowsWithABlock) {
  const StoredMatrix stored = make();
  for (const Storage storage : {GetParam(), Storage::dense, Storage::messy})
    for (const std::uint64_t width : {9, 14}) {
      const StoredMatrix other(context, storage, 21, width, 2);
      Table right = other.table;
      for (auto& row : right) row.resize(9);
      for (const std::uint64_t stride : {23, 29})
        for (const std::uint64_t count : {1, 2, 7, 8, 9, 20}) {
          DeviceVector<double> result = garbageVector(stride * count);
          DeviceVector<double>& block = other.matrix->deviceRows(1, count);
          stored.matrix->blockProducts(block, width, result, stride, count);
          expectProducts(stored.sums, rowsOf(right, 1, count), valuesOf(result), stride);
        }
    }
}

// Whichever allocation fails, it is an error, and the matrix works as soon as there is memory.
TEST_P(MatrixTest, SurvivesADeviceWithoutMemory) {
  std::uint64_t failures = 0;
  for (bool failed = true; failed; failures += failed ? 1 : 0) {
    ASSERT_LT(failures, 20u);
    const StoredMatrix stored = make();
    DeviceVector<double> result(23 * 5);
    const auto multiply = [&] {
      stored.matrix->rowProducts(result, 3);
      stored.matrix->blockProducts(stored.matrix->deviceRows(2, 5), 9, result, 23, 5);
    };
    {
      const zel::AllocationFault fault(failures + 1);
      failed = !failureOf<zel::RuntimeException>(multiply).empty();
    }
    multiply();
    expectProducts(stored.sums, rowsOf(stored.table, 2, 5), valuesOf(result), 23);
  }
  EXPECT_GE(failures, 1u);
}

INSTANTIATE_TEST_SUITE_P(Storages, MatrixTest,
                         testing::Values(Storage::dense, Storage::sorted, Storage::messy,
                                         Storage::full),
                         [](const auto& test) { return nameOf(test.param); });

// NaN moves a bound only as a column's first value, and an absent entry is a value like any other.
TEST(Matrix, BoundsSeeNanAlikeInBothKinds) {
  zeltest::LinearAlgebra context;
  std::vector<double> dense = {garbage, 0, 1, 0, garbage, 2, -5, 3, 0};
  std::vector<double> values = {garbage, 1, garbage, 2, -5, 3};
  std::vector<int> columns = {0, 2, 1, 2, 0, 1};
  std::vector<int> offsets = {0, 2, 4, 6};
  for (const bool sparse : {false, true}) {
    zellas::LasContext& las = sparse ? static_cast<zellas::LasContext&>(context.sparse)
                                     : static_cast<zellas::LasContext&>(context.blas);
    const auto matrix = zelmag::createMatrix<double>(sparse ? values.data() : dense.data(),
                                                     columns.data(), offsets.data(), 3, 3, las);
    zelsvm::HostVector<double2> bounds(3);
    matrix->collectBounds(bounds);
    EXPECT_TRUE(std::isnan(bounds[0].x) && std::isnan(bounds[0].y));
    EXPECT_EQ(bounds[1].x, 0);
    EXPECT_EQ(bounds[1].y, 3);
    EXPECT_EQ(bounds[2].x, 0);
    EXPECT_EQ(bounds[2].y, 2);
  }
}

}  // namespace
