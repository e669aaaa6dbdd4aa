// The sparse products that the engine leans on, through their wrapper, whichever platform provides
// them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

#include "platform/cuda/linear_algebra/linear_algebra.h"
#include "platform/device/device_vectors.h"

namespace {

using zel::DeviceVector;
using zeltest::valuesOf;
using Values = std::vector<double>;

constexpr auto plain = CUSPARSE_OPERATION_NON_TRANSPOSE;
constexpr double infinity = std::numeric_limits<double>::infinity();

template <typename T>
DeviceVector<T> deviceVector(const std::vector<T>& values) {
  return DeviceVector<T>(std::span<const T>(values));
}

struct Csr {
  std::size_t rows;
  std::size_t cols;
  std::vector<int> offsets{0};
  std::vector<int> indices{};
  Values values{};

  void addRow(const std::vector<int>& columns) {
    indices.insert(indices.end(), columns.begin(), columns.end());
    offsets.push_back(static_cast<int>(indices.size()));
  }
  [[nodiscard]] Values dense() const {
    Values table(rows * cols);
    for (std::size_t i = 0; i < rows; ++i)
      for (auto p = static_cast<std::size_t>(offsets[i]);
           p < static_cast<std::size_t>(offsets[i + 1]); ++p)
        table[i * cols + static_cast<std::size_t>(indices[p])] += values[p];
    return table;
  }
};

// Each element is stored with the given probability; the columns of a row stand in any order.
Csr randomCsr(std::size_t rows, std::size_t cols, double density) {
  std::mt19937 generator(5);
  std::bernoulli_distribution stored(density);
  Csr matrix{rows, cols};
  for (std::size_t i = 0; i < rows; ++i) {
    std::vector<int> columns;
    for (std::size_t j = 0; j < cols; ++j)
      if (stored(generator)) columns.push_back(static_cast<int>(j));
    std::shuffle(columns.begin(), columns.end(), generator);
    matrix.addRow(columns);
  }
  matrix.values = randomValues(matrix.indices.size(), 6);
  return matrix;
}

struct DeviceCsr {
  explicit DeviceCsr(const Csr& csr)
      : values(deviceVector(csr.values)),
        indices(deviceVector(csr.indices)),
        offsets(deviceVector(csr.offsets)),
        matrix(context, values, indices, offsets, csr.rows, csr.cols) {}

  struct Context : zellas::SparseContext<double> {
    Context() { create(); }
  } context;
  DeviceVector<double> values;
  DeviceVector<int> indices;
  DeviceVector<int> offsets;
  zellas::SparseMatrix<double> matrix;
};

// Both products of the matrix against plain loops over its dense form, in columns that lie `gap`
// further apart than they are long; what is between them stays.
void check(const Csr& csr, std::size_t n, double beta, std::size_t gap = 2) {
  constexpr double alpha = -1.25;
  const std::size_t ldb = csr.cols + gap;
  const std::size_t ldc = csr.rows + gap;
  const Values B = randomValues(ldb * n, 11);
  const Values C = beta == 0 ? Values(ldc * n, garbage) : randomValues(ldc * n, 12);
  const Values dense = csr.dense();
  const double tolerance = 1e-14 * static_cast<double>(csr.cols + 2);
  DeviceCsr A(csr);
  DeviceVector<double> deviceB = deviceVector(B);
  DeviceVector<double> deviceC = deviceVector(C);
  A.matrix.mm(plain, plain, n, alpha, deviceB.data(), gap == 0 ? 0 : ldb, beta, deviceC.data(),
              gap == 0 ? 0 : ldc);
  const Values product = valuesOf(deviceC);
  deviceC = deviceVector(C);
  A.matrix.mv(alpha, deviceB.data(), beta, deviceC.data());
  const Values column = valuesOf(deviceC);
  for (std::size_t q = 0; q < product.size(); ++q) {
    const std::size_t i = q % ldc;
    if (i >= csr.rows) {
      ASSERT_TRUE(product[q] == C[q] || (std::isnan(product[q]) && std::isnan(C[q])));
      continue;
    }
    double sum = 0;
    for (std::size_t p = 0; p < csr.cols; ++p)
      sum += dense[i * csr.cols + p] * B[p + q / ldc * ldb];
    const double expected = alpha * sum + (beta == 0 ? 0 : beta * C[q]);
    ASSERT_NEAR(product[q], expected, tolerance) << q;
    if (q < csr.rows) {
      ASSERT_NEAR(column[q], expected, tolerance) << q;
    }
  }
}

using Size = std::tuple<std::size_t, std::size_t>;
class SparseProducts : public testing::TestWithParam<std::tuple<Size, double, int>> {};

TEST_P(SparseProducts, AgreeWithTheDenseForm) {
  const auto [size, density, n] = GetParam();
  const Csr csr = randomCsr(std::get<0>(size), std::get<1>(size), density);
  for (const double beta : {0.0, 1.0, 0.5}) check(csr, static_cast<std::size_t>(n), beta);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, SparseProducts,
    testing::Combine(testing::Values(Size{1, 1}, Size{37, 5}, Size{300, 211}, Size{20, 5000}),
                     testing::Values(0.0, 0.03, 0.5, 0.95, 1.0), testing::Values(1, 2, 8, 19)));

TEST(SparseProduct, CountsAColumnTwiceThatARowHoldsTwice) {
  Csr sparse{3, 40};
  sparse.addRow({7, 3, 7});
  sparse.addRow({});
  sparse.addRow({});
  sparse.values = {1, 2, 4};
  check(sparse, 3, 0);
  Csr nearlyFull = randomCsr(30, 20, 1.0);
  nearlyFull.indices[5] = nearlyFull.indices[6];
  check(nearlyFull, 3, 0, 0);
}

TEST(SparseProduct, AnAbsentElementDoesNotMeetInfinity) {
  Csr csr{10, 4};
  for (int i = 0; i < 10; ++i) csr.addRow({3, 0, 1});  // nearly full
  csr.values = randomValues(30, 9);
  DeviceCsr A(csr);
  DeviceVector<double> B = deviceVector<double>({1, 2, infinity, 3, 1, 2, garbage, 3});
  DeviceVector<double> C(20);
  A.matrix.mm(plain, plain, 2, 1, B.data(), 0, 0, C.data(), 0);
  for (const double value : valuesOf(C)) EXPECT_TRUE(std::isfinite(value));
  A.matrix.mv(1, B.data(), 0, C.data());
  for (const double value : valuesOf(C)) EXPECT_TRUE(std::isfinite(value));
}

TEST(SparseProduct, ScattersAnyStretchOfStoredEntries) {
  Csr csr{2, 5};
  csr.addRow({4, 0, 2});
  csr.addRow({1});
  csr.values = {40, 10, 20, 7};
  DeviceCsr A(csr);
  for (const auto& [first, count, expected] : {std::tuple{0u, 3u, Values{10, 0, 20, 0, 40}},
                                               {3u, 1u, Values{0, 7, 0, 0, 0}},
                                               {1u, 2u, Values{10, 0, 20, 0, 0}}}) {
    DeviceVector<double> x = deviceVector(Values(5));
    A.matrix.scatterRow(x.data(), first, count);
    EXPECT_EQ(valuesOf(x), expected);
  }
}

}  // namespace
