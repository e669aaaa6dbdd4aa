#include "platform/cuda/kernels/vector_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "platform/device/device_vectors.h"

namespace {

using zel::DeviceVector;
using zel::LaunchShape;
using zeltest::valuesOf;

constexpr unsigned threads = 256;

LaunchShape shape() { return {2U, threads / 2}; }

// None, one alone, a part of one pass, and three whole passes.
const std::vector<unsigned> counts{0, 1, threads - 1, 3 * threads};

template <typename T>
T element(std::uint64_t i) {
  return static_cast<T>(static_cast<double>(i * 7919 % 251) / 16 - 5);
}

// NaN equals NaN; otherwise within some units in the last place, 0 for exactly.
template <typename T>
bool isClose(T value, T expected, int units) {
  if (std::isnan(expected) || std::isinf(expected) || units == 0)
    return std::isnan(expected) ? std::isnan(value) : value == expected;
  const T scale = std::abs(expected) * std::numeric_limits<T>::epsilon();
  return std::abs(value - expected) <= static_cast<T>(units) * scale;
}

// Runs an operation on the first n of n + 3 elements: these become what is expected of (x, y), the
// others stay.
template <typename T, typename Y, typename Run, typename Expected>
void expectElementwise(const Run& run, const Expected& expected, int units = 0) {
  for (const unsigned n : counts) {
    std::vector<T> x(n + 3);
    std::vector<Y> y(n + 3);
    for (unsigned i = 0; i < n + 3; ++i) {
      x[i] = element<T>(i);
      y[i] = static_cast<Y>(std::abs(element<double>(i + 5)) * 12);
    }
    DeviceVector<T> deviceX{std::span<const T>(x)};
    DeviceVector<Y> deviceY{std::span<const Y>(y)};
    run(deviceX.data(), deviceY.data(), n);
    const std::vector<T> result = valuesOf(deviceX);
    for (unsigned i = 0; i < n + 3; ++i) {
      const T wanted = i < n ? expected(x[i], y[i]) : x[i];
      ASSERT_TRUE(isClose(result[i], wanted, units))
          << result[i] << " is not " << wanted << " at " << i << " of " << n;
    }
    EXPECT_EQ(valuesOf(deviceY), y);
  }
}

template <zel::DEVICE_VEC_SCALAR_OP op, typename T, typename Expected>
void expectScalar(T s, const Expected& expected, int units = 0) {
  SCOPED_TRACE(op);
  const auto run = [s](T* x, T*, unsigned n) { zel::vecScalar<op>(shape(), x, s, n); };
  expectElementwise<T, T>(
      run, [s, expected](T v, T) { return expected(v, s); }, units);
}

template <typename T>
class VectorKernels : public testing::Test {};
using Types = testing::Types<double, float>;
TYPED_TEST_SUITE(VectorKernels, Types);

TYPED_TEST(VectorKernels, ScalarOperations) {
  using T = TypeParam;
  const T s{0.3F};
  expectScalar<zel::DEVICE_VEC_FILL>(s, [](T, T scalar) { return scalar; });
  expectScalar<zel::DEVICE_VEC_ADD_SCALAR>(s, [](T v, T scalar) { return v + scalar; });
  expectScalar<zel::DEVICE_VEC_MULTIPLY_SCALAR>(s, [](T v, T scalar) { return v * scalar; });
  expectScalar<zel::DEVICE_VEC_SQRT>(s, [](T v, T scalar) { return std::sqrt(v + scalar); });
  expectScalar<zel::DEVICE_VEC_EXP>(
      s, [](T v, T scalar) { return std::exp(v + scalar); }, 4);
  const auto logistic = [](T v, T scalar) {
    return static_cast<T>(1 / (1 + std::exp(-static_cast<double>(v + scalar))));
  };
  expectScalar<zel::DEVICE_VEC_LOGISTIC>(s, logistic, 512);  // tanh + 1 cancels below 0
}

TYPED_TEST(VectorKernels, BinaryOperations) {
  using T = TypeParam;
  expectElementwise<T, T>(
      [](T* x, const T* y, unsigned n) { zel::vecBinary<zel::DEVICE_VEC_ADD>(shape(), x, y, n); },
      [](T x, T y) { return x + y; });
  expectElementwise<T, T>(
      [](T* x, const T* y, unsigned n) {
        zel::vecBinary<zel::DEVICE_VEC_MULTIPLY>(shape(), x, y, n);
      },
      [](T x, T y) { return x * y; });
}

TYPED_TEST(VectorKernels, ScaledSumRoundsOnce) {
  using T = TypeParam;
  const T a = T{1} + std::numeric_limits<T>::epsilon();
  const auto run = [a](T* y, T* x, unsigned n) { zel::vecAxpby(shape(), y, a, x, -1, n); };
  expectElementwise<T, T>(run, [a](T y, T x) { return std::fma(a, x, -y); });
  // (1 + e)(1 - e) - 1 is -e²: only the product's exact bits have it.
  const std::vector<T> below{2 - a};
  const std::vector<T> one{1};
  DeviceVector<T> x{std::span<const T>(below)};
  DeviceVector<T> y{std::span<const T>(one)};
  zel::vecAxpby(shape(), y.data(), a, x.data(), -1, 1);
  EXPECT_EQ(valuesOf(y)[0], -(a - 1) * (a - 1));
}

template <typename T, typename U>
void expectConversion() {
  const auto run = [](T* out, U* in, unsigned n) { zel::vecNumerize(shape(), out, in, n); };
  expectElementwise<T, U>(run, [](T, U in) { return static_cast<T>(in); });
}

TYPED_TEST(VectorKernels, Conversions) {
  using Other = std::conditional_t<std::is_same_v<TypeParam, double>, float, double>;
  expectConversion<TypeParam, Other>();
  expectConversion<TypeParam, unsigned char>();
  expectConversion<TypeParam, unsigned int>();
}

}  // namespace
