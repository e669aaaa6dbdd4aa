// The dense products that the engine leans on, whichever platform provides them.
#include <cublas_v2.h>
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "platform/device/device_array.h"

namespace {

class Blas : public testing::Test {
 protected:
  Blas() { EXPECT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS); }
  ~Blas() override { EXPECT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS); }

  cublasHandle_t handle = nullptr;
};

struct Shape {
  int m, n, k;
};

// A column-major array with unused elements below each column.
struct Array {
  Array(int rows, int columns, int gap, unsigned seed)
      : leading(rows + gap),
        values(randomValues(static_cast<std::size_t>(leading * columns), seed)),
        device(values) {}
  [[nodiscard]] double at(int i, int j) const {
    return values[static_cast<std::size_t>(i + j * leading)];
  }

  int leading;
  std::vector<double> values;
  DeviceArray<double> device;
};

using Case = std::tuple<Shape, cublasOperation_t, cublasOperation_t, double>;

class Product : public Blas, public testing::WithParamInterface<Case> {};

TEST_P(Product, AgreesWithTheTextbook) {
  const auto [shape, transA, transB, beta] = GetParam();
  const auto [m, n, k] = shape;
  const bool tA = transA == CUBLAS_OP_T;
  const bool tB = transB == CUBLAS_OP_T;
  const Array A(tA ? k : m, tA ? m : k, 3, 1);
  const Array B(tB ? n : k, tB ? k : n, n == 1 ? 0 : 2, 2);
  Array before(m, n, 5, 3);
  if (beta == 0) before.values.assign(before.values.size(), garbage);
  const DeviceArray<double> C(before.values);
  const double alpha = 1.5;
  ASSERT_EQ(cublasDgemm_v2(handle, transA, transB, m, n, k, &alpha, A.device.data(), A.leading,
                           B.device.data(), B.leading, &beta, C.data(), before.leading),
            CUBLAS_STATUS_SUCCESS);
  const std::vector<double> after = C.values();
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < before.leading; ++i) {
      const auto position = static_cast<std::size_t>(i + j * before.leading);
      if (i >= m) {  // below the column nothing may change
        EXPECT_EQ(std::isnan(after[position]), std::isnan(before.values[position]));
        continue;
      }
      double sum = 0;
      for (int p = 0; p < k; ++p)
        sum += (tA ? A.at(p, i) : A.at(i, p)) * (tB ? B.at(j, p) : B.at(p, j));
      const double expected = alpha * sum + (beta == 0 ? 0 : beta * before.at(i, j));
      ASSERT_NEAR(after[position], expected, 1e-14 * (k + 2)) << i << ", " << j;
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, Product,
                         testing::Combine(testing::Values(Shape{1, 1, 1}, Shape{7, 5, 3},
                                                          Shape{301, 1, 77}, Shape{3000, 1, 101},
                                                          Shape{5, 1, 2500}, Shape{700, 9, 61},
                                                          Shape{130, 140, 300}, Shape{4, 3, 0}),
                                          testing::Values(CUBLAS_OP_N, CUBLAS_OP_T),
                                          testing::Values(CUBLAS_OP_N, CUBLAS_OP_T),
                                          testing::Values(0.0, 1.0, -0.5)));

TEST_F(Blas, LeavesTheOutputAloneWhereThereIsNoneAndRefusesWrongSizes) {
  const Array A(4, 4, 0, 1);
  const double one = 1;
  const double zero = 0;
  double* const memory = A.device.data();
  const auto product = [&](int m, int n, int k, int lda, int ldb, int ldc) {
    return cublasDgemm_v2(handle, CUBLAS_OP_N, CUBLAS_OP_N, m, n, k, &one, memory, lda, memory, ldb,
                          &zero, memory, ldc);
  };
  EXPECT_EQ(product(0, 4, 4, 4, 4, 4), CUBLAS_STATUS_SUCCESS);
  EXPECT_EQ(product(4, 0, 4, 4, 4, 4), CUBLAS_STATUS_SUCCESS);
  EXPECT_EQ(product(-1, 1, 1, 4, 4, 4), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(1, 1, -1, 4, 4, 4), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(2, 2, 2, 1, 2, 2), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(2, 2, 2, 2, 1, 2), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(product(2, 2, 2, 2, 2, 1), CUBLAS_STATUS_INVALID_VALUE);
  EXPECT_EQ(A.device.values(), A.values);
  EXPECT_EQ(cublasDgemm_v2(nullptr, CUBLAS_OP_N, CUBLAS_OP_N, 1, 1, 1, &one, memory, 1, memory, 1,
                           &zero, memory, 1),
            CUBLAS_STATUS_NOT_INITIALIZED);
}

}  // namespace
