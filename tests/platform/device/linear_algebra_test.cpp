// The wrappers over cuBLAS and cuSPARSE.
#include "platform/cuda/linear_algebra/linear_algebra.h"

#include <gtest/gtest.h>

#include <string>

#include "base/errors.h"
#include "support/temp_file.h"
#include "text_match.h"

namespace {

using zel::DeviceVector;
using zel::RuntimeException;
using zellas::BlasContext;
using zellas::SparseContext;
using zeltest::failureOf;

TEST(LinearAlgebraErrors, NameTheLibraryTheTextAndThePlace) {
  EXPECT_EQ(failureOf([] { zellas::zelSafeBlasCall(CUBLAS_STATUS_SUCCESS); }), "");
  for (const auto& [status, reason] : {std::pair{CUBLAS_STATUS_NOT_INITIALIZED, "not initialized"},
                                       {static_cast<cublasStatus_t>(2), "unknown"}}) {
    const auto call = [status = status] { zellas::zelSafeBlasCall(status); };
    const std::string line = std::to_string(__LINE__ - 1);
    const std::string text = failureOf<RuntimeException>(call);
    EXPECT_TRUE(zeltest::matches(text, "(.*/)?platform/device/linear_algebra_test\\(" + line +
                                           "\\): CUBLAS runtime error - " + reason + "\n\n"))
        << text;
  }
  for (const auto status : {CUSPARSE_STATUS_INVALID_VALUE, CUSPARSE_STATUS_NOT_INITIALIZED}) {
    const std::string text =
        failureOf<RuntimeException>([&] { zellas::zelSafeSparseCall(status); });
    const std::string end =
        std::string("): CUSPARSE runtime error - ") + cusparseGetErrorString(status) + "\n\n";
    EXPECT_TRUE(text.ends_with(end)) << text;
  }
}

TEST(LinearAlgebraErrors, HandlesMustExist) {
  BlasContext blas;
  DeviceVector<double> values(4);
  zellas::DenseMatrix<double> dense(blas, values.data(), 2, 2, 2);
  DeviceVector<double> y(2);
  const std::string expected = "Uninitialized CuBlas runtime";
  EXPECT_EQ(
      failureOf<RuntimeException>([&] { dense.gemv(CUBLAS_OP_T, 1, values.data(), 0, y.data()); }),
      expected);
  EXPECT_EQ(failureOf<RuntimeException>([&] {
              dense.gemm(CUBLAS_OP_T, CUBLAS_OP_N, 1, 1, values.data(), 2, 0, y.data(), 2);
            }),
            expected);
  EXPECT_EQ(SparseContext<double>().handle(), nullptr);
}

TEST(WorkBuffer, OnlyGrows) {
  zellas::WorkBuffer buffer;
  EXPECT_EQ(buffer.prepared(0), nullptr);
  void* const first = buffer.prepared(100);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(buffer.prepared(512), first) << "capacities are rounded up";
  EXPECT_EQ(buffer.prepared(0), first);
  void* const larger = buffer.prepared(100000);
  zel::clearDeviceMemory(larger, 100000);
  EXPECT_EQ(buffer.prepared(1), larger);
}

}  // namespace
