// The sparse products that the engine leans on, whichever platform provides them.
#include <cusparse.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <tuple>
#include <vector>

#include "platform/device_array.h"

namespace {

constexpr auto plain = CUSPARSE_OPERATION_NON_TRANSPOSE;

struct Csr {
  int rows;
  int cols;
  std::vector<int> offsets{0};
  std::vector<int> indices{};
  std::vector<double> values{};

  void endRow() { offsets.push_back(static_cast<int>(indices.size())); }
};

// Each element is stored with the given probability; the columns of a row stand in any order.
Csr randomCsr(int rows, int cols, double density, unsigned seed) {
  std::mt19937 generator(seed);
  std::bernoulli_distribution stored(density);
  Csr matrix{rows, cols};
  for (int i = 0; i < rows; ++i) {
    std::vector<int> columns;
    for (int j = 0; j < cols; ++j)
      if (stored(generator)) columns.push_back(j);
    std::shuffle(columns.begin(), columns.end(), generator);
    matrix.indices.insert(matrix.indices.end(), columns.begin(), columns.end());
    matrix.endRow();
  }
  matrix.values = randomValues(matrix.indices.size(), seed + 1);
  return matrix;
}

std::vector<double> denseRows(const Csr& matrix) {
  std::vector<double> dense(static_cast<std::size_t>(matrix.rows * matrix.cols), 0.0);
  for (std::size_t i = 0; i < static_cast<std::size_t>(matrix.rows); ++i)
    for (auto p = static_cast<std::size_t>(matrix.offsets[i]);
         p < static_cast<std::size_t>(matrix.offsets[i + 1]); ++p)
      dense[i * static_cast<std::size_t>(matrix.cols) +
            static_cast<std::size_t>(matrix.indices[p])] += matrix.values[p];
  return dense;
}

// A matrix on the device with its descriptor.
class DeviceCsr {
 public:
  explicit DeviceCsr(const Csr& matrix)
      : offsets(matrix.offsets), indices(matrix.indices), values(matrix.values) {
    EXPECT_EQ(cusparseCreateCsr(&descriptor, matrix.rows, matrix.cols,
                                static_cast<std::int64_t>(matrix.values.size()), offsets.data(),
                                indices.data(), values.data(), CUSPARSE_INDEX_32I,
                                CUSPARSE_INDEX_32I, CUSPARSE_INDEX_BASE_ZERO, CUDA_R_64F),
              CUSPARSE_STATUS_SUCCESS);
  }
  ~DeviceCsr() { EXPECT_EQ(cusparseDestroySpMat(descriptor), CUSPARSE_STATUS_SUCCESS); }
  DeviceCsr(const DeviceCsr&) = delete;
  DeviceCsr& operator=(const DeviceCsr&) = delete;

  cusparseSpMatDescr_t descriptor = nullptr;

 private:
  DeviceArray<int> offsets;
  DeviceArray<int> indices;
  DeviceArray<double> values;
};

class Sparse : public testing::Test {
 protected:
  Sparse() { EXPECT_EQ(cusparseCreate(&handle), CUSPARSE_STATUS_SUCCESS); }
  ~Sparse() override { EXPECT_EQ(cusparseDestroy(handle), CUSPARSE_STATUS_SUCCESS); }

  std::vector<double> timesVector(const Csr& matrix, const std::vector<double>& x, double beta,
                                  const std::vector<double>& y) {
    const DeviceCsr A(matrix);
    const DeviceArray<double> deviceX(x);
    const DeviceArray<double> deviceY(y);
    cusparseDnVecDescr_t X = nullptr;
    cusparseDnVecDescr_t Y = nullptr;
    EXPECT_EQ(cusparseCreateDnVec(&X, matrix.cols, deviceX.data(), CUDA_R_64F),
              CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseCreateDnVec(&Y, matrix.rows, deviceY.data(), CUDA_R_64F),
              CUSPARSE_STATUS_SUCCESS);
    std::size_t bytes = 1;
    EXPECT_EQ(cusparseSpMV_bufferSize(handle, plain, &alpha, A.descriptor, X, &beta, Y, CUDA_R_64F,
                                      CUSPARSE_SPMV_ALG_DEFAULT, &bytes),
              CUSPARSE_STATUS_SUCCESS);
    const DeviceArray<unsigned char> buffer(bytes);
    EXPECT_EQ(cusparseSpMV(handle, plain, &alpha, A.descriptor, X, &beta, Y, CUDA_R_64F,
                           CUSPARSE_SPMV_ALG_DEFAULT, buffer.data()),
              CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseDestroyDnVec(X), CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseDestroyDnVec(Y), CUSPARSE_STATUS_SUCCESS);
    return deviceY.values();
  }

  std::vector<double> timesMatrix(const Csr& matrix, int n, const std::vector<double>& B, int ldb,
                                  double beta, const std::vector<double>& C, int ldc) {
    const DeviceCsr A(matrix);
    const DeviceArray<double> deviceB(B);
    const DeviceArray<double> deviceC(C);
    cusparseDnMatDescr_t b = nullptr;
    cusparseDnMatDescr_t c = nullptr;
    EXPECT_EQ(cusparseCreateDnMat(&b, matrix.cols, n, ldb, deviceB.data(), CUDA_R_64F,
                                  CUSPARSE_ORDER_COL),
              CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseCreateDnMat(&c, matrix.rows, n, ldc, deviceC.data(), CUDA_R_64F,
                                  CUSPARSE_ORDER_COL),
              CUSPARSE_STATUS_SUCCESS);
    std::size_t bytes = 1;
    EXPECT_EQ(cusparseSpMM_bufferSize(handle, plain, plain, &alpha, A.descriptor, b, &beta, c,
                                      CUDA_R_64F, CUSPARSE_SPMM_ALG_DEFAULT, &bytes),
              CUSPARSE_STATUS_SUCCESS);
    const DeviceArray<unsigned char> buffer(bytes);
    EXPECT_EQ(cusparseSpMM(handle, plain, plain, &alpha, A.descriptor, b, &beta, c, CUDA_R_64F,
                           CUSPARSE_SPMM_ALG_DEFAULT, buffer.data()),
              CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseDestroyDnMat(b), CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseDestroyDnMat(c), CUSPARSE_STATUS_SUCCESS);
    return deviceC.values();
  }

  // Both products of the matrix against plain loops over its dense form.
  void check(const Csr& matrix, int n, double beta) {
    const int ldb = matrix.cols + 1;
    const int ldc = matrix.rows + 2;
    const auto B = randomValues(static_cast<std::size_t>(ldb * n), 11);
    auto C = randomValues(static_cast<std::size_t>(ldc * n), 12);
    if (beta == 0) C.assign(C.size(), garbage);
    const std::vector<double> dense = denseRows(matrix);
    const auto expected = [&](int i, int j) {
      double sum = 0;
      for (int p = 0; p < matrix.cols; ++p)
        sum += dense[static_cast<std::size_t>(i * matrix.cols + p)] *
               B[static_cast<std::size_t>(p + j * ldb)];
      return alpha * sum + (beta == 0 ? 0 : beta * C[static_cast<std::size_t>(i + j * ldc)]);
    };
    const double tolerance = 1e-14 * (matrix.cols + 2);
    const auto product = timesMatrix(matrix, n, B, ldb, beta, C, ldc);
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < matrix.rows; ++i)
        ASSERT_NEAR(product[static_cast<std::size_t>(i + j * ldc)], expected(i, j), tolerance)
            << i << ", " << j;
      for (int i = matrix.rows; i < ldc; ++i) {  // the gap below a column keeps its contents
        const auto gap = static_cast<std::size_t>(i + j * ldc);
        ASSERT_TRUE(product[gap] == C[gap] || (std::isnan(product[gap]) && std::isnan(C[gap])));
      }
    }
    const auto column = timesVector(matrix, {B.begin(), B.begin() + matrix.cols}, beta,
                                    {C.begin(), C.begin() + matrix.rows});
    for (int i = 0; i < matrix.rows; ++i)
      ASSERT_NEAR(column[static_cast<std::size_t>(i)], expected(i, 0), tolerance) << i;
  }

  const double alpha = -1.25;
  cusparseHandle_t handle = nullptr;
};

using Case = std::tuple<std::tuple<int, int>, double, int>;

class SparseProduct : public Sparse, public testing::WithParamInterface<Case> {};

TEST_P(SparseProduct, AgreesWithTheDenseForm) {
  const auto [size, density, n] = GetParam();
  const auto [rows, cols] = size;
  for (const double beta : {0.0, 1.0, 0.5}) check(randomCsr(rows, cols, density, 5), n, beta);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SparseProduct,
                         testing::Combine(testing::Values(std::tuple{1, 1}, std::tuple{37, 5},
                                                          std::tuple{300, 211},
                                                          std::tuple{20, 5000}),
                                          testing::Values(0.0, 0.03, 0.5, 0.95, 1.0),
                                          testing::Values(1, 2, 8, 19)));

TEST_F(Sparse, CountsAColumnTwiceThatARowHoldsTwice) {
  Csr sparse{3, 40};
  sparse.indices = {7, 3, 7};
  sparse.values = {1, 2, 4};
  sparse.endRow();
  sparse.endRow();
  sparse.endRow();
  check(sparse, 3, 0);
  Csr nearlyFull = randomCsr(30, 20, 1.0, 3);
  nearlyFull.indices[5] = nearlyFull.indices[6];
  check(nearlyFull, 3, 0);
}

TEST_F(Sparse, AnAbsentElementDoesNotMeetInfinity) {
  Csr matrix = randomCsr(10, 4, 1.0, 9);
  for (std::size_t i = 0; i < 10; ++i) {  // drops column 2 everywhere
    const auto first = matrix.indices.begin() + static_cast<std::ptrdiff_t>(3 * i);
    const auto dropped = std::find(first, first + 4, 2) - matrix.indices.begin();
    matrix.indices.erase(matrix.indices.begin() + dropped);
    matrix.values.erase(matrix.values.begin() + dropped);
    matrix.offsets[i + 1] = static_cast<int>(3 * (i + 1));
  }
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> B = {1, 2, infinity, 3, 1, 2, garbage, 3};
  for (const double value : timesVector(matrix, {1, 2, infinity, 3}, 0, std::vector<double>(10, 1)))
    EXPECT_TRUE(std::isfinite(value));
  for (const double value : timesMatrix(matrix, 2, B, 4, 0, std::vector<double>(20, 1), 10))
    EXPECT_TRUE(std::isfinite(value));
}

TEST_F(Sparse, ScattersOnlyTheStoredEntries) {
  const DeviceArray<int> indices({4, 0, 2});
  const DeviceArray<double> values({40, 10, 20});
  const DeviceArray<double> target({1, 2, 3, 4, 5});
  cusparseSpVecDescr_t x = nullptr;
  cusparseDnVecDescr_t y = nullptr;
  for (const int count : {0, 3}) {
    ASSERT_EQ(cusparseCreateSpVec(&x, 5, count, indices.data(), values.data(), CUSPARSE_INDEX_32I,
                                  CUSPARSE_INDEX_BASE_ZERO, CUDA_R_64F),
              CUSPARSE_STATUS_SUCCESS);
    ASSERT_EQ(cusparseCreateDnVec(&y, 5, target.data(), CUDA_R_64F), CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseScatter(handle, x, y), CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseDestroySpVec(x), CUSPARSE_STATUS_SUCCESS);
    EXPECT_EQ(cusparseDestroyDnVec(y), CUSPARSE_STATUS_SUCCESS);
    if (count == 0) {
      EXPECT_EQ(target.values(), (std::vector<double>{1, 2, 3, 4, 5}));
    }
  }
  EXPECT_EQ(target.values(), (std::vector<double>{10, 2, 20, 4, 40}));
}

}  // namespace
