// Kernel transforms, in every instruction set, against the C library.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "support/isa_tables.h"

namespace {

using zeltest::IsaTables;
using zeltest::runnableTables;
using zeltest::sameNumber;
using Numbers = std::vector<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t counts[] = {0, 1, 2, 3, 7, 8, 9, 63, 64, 65, 1000};

// The C library's vector functions are at most four representable numbers off.
bool nearlySame(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  const auto distance =
      std::bit_cast<std::int64_t>(std::abs(a)) - std::bit_cast<std::int64_t>(std::abs(b));
  return std::signbit(a) == std::signbit(b) && std::abs(distance) <= 4;
}

Numbers randomNumbers(std::uint64_t count, double low, double high) {
  std::mt19937 generator(static_cast<unsigned>(count));
  std::uniform_real_distribution<double> uniform(low, high);
  Numbers numbers(count);
  for (double& number : numbers) number = uniform(generator);
  return numbers;
}

// Runs the transform on a copy off every alignment, with a guard at either end.
template <typename Transform>
Numbers transformed(const Numbers& input, const Transform& transform) {
  Numbers guarded(input.size() + 2, 77);
  std::copy(input.begin(), input.end(), guarded.begin() + 1);
  transform(guarded.data() + 1);
  EXPECT_EQ(guarded.front(), 77);
  EXPECT_EQ(guarded.back(), 77);
  return {guarded.begin() + 1, guarded.end() - 1};
}

class TransformSweeps : public testing::TestWithParam<IsaTables> {
 protected:
  static void apply(zelsvm::SVM_KERNEL kernel, const zelsvm::KernelConstants& constants, double* m,
                    const double* norms, std::uint64_t n, double norm) {
    GetParam().transforms->kernels[kernel](constants, m, norms, n, norm);
  }
};

TEST_P(TransformSweeps, PolynomialPowers) {
  for (const std::uint64_t n : counts)
    for (const unsigned degree : {0u, 1u, 2u, 3u, 10u}) {
      const Numbers x = randomNumbers(n, -3, 3);
      const Numbers values = transformed(x, [&](double* m) {
        apply(zelsvm::SVM_KERNEL_POLYNOMIAL, {0.3, -0.7, degree}, m, nullptr, n, 0);
      });
      for (std::uint64_t i = 0; i < n; ++i)
        EXPECT_TRUE(sameNumber(values[i],
                               zelsvm::binaryPower(GetParam().fma(0.3, x[i], -0.7), degree, 1.0)));
    }
}

TEST_P(TransformSweeps, RadialValuesDownToTheSmallest) {
  for (const std::uint64_t n : counts) {
    const Numbers x = randomNumbers(n, -1, 1);
    const Numbers norms = randomNumbers(n, 0, 1500);
    const Numbers values = transformed(x, [&](double* m) {
      apply(zelsvm::SVM_KERNEL_RADIAL, {0.5, 0, 0}, m, norms.data(), n, 0.25);
    });
    for (std::uint64_t i = 0; i < n; ++i)
      EXPECT_TRUE(nearlySame(values[i], std::exp(-0.5 * ((0.25 + norms[i]) - 2 * x[i]))))
          << norms[i];
  }
}

TEST_P(TransformSweeps, RadialLimits) {
  const Numbers x{0, 0, -1e9, 1e9, nan, 1, infinity, 0, 0.5};
  const Numbers norms{0, 1e6, 0, 0, 1, 1, 0, infinity, 0};
  const Numbers expected{std::exp(-1), 0, 0, infinity, nan, 1, infinity, 0, 1};
  const Numbers values = transformed(x, [&](double* m) {
    apply(zelsvm::SVM_KERNEL_RADIAL, {1, 0, 0}, m, norms.data(), x.size(), 1);
  });
  for (std::size_t i = 0; i < x.size(); ++i) EXPECT_TRUE(nearlySame(values[i], expected[i])) << i;
}

TEST_P(TransformSweeps, SigmoidValues) {
  for (const std::uint64_t n : counts)
    for (const double scale : {1e-9, 0.5, 30.0}) {
      Numbers x = randomNumbers(n, -1, 1);
      if (n == 1000) std::copy_n(Numbers{infinity, -infinity, nan, 0}.data(), 4, &x[9]);
      const Numbers values = transformed(x, [&](double* m) {
        apply(zelsvm::SVM_KERNEL_SIGMOID, {scale, scale / 8, 0}, m, nullptr, n, 0);
      });
      for (std::uint64_t i = 0; i < n; ++i)
        EXPECT_TRUE(nearlySame(values[i], std::tanh(GetParam().fma(scale, x[i], scale / 8))))
            << x[i] << " times " << scale;
    }
}

TEST_P(TransformSweeps, WeightedSumsTakeEveryTerm) {
  for (const std::uint64_t n : counts) {
    Numbers a(n + 2, nan);
    Numbers b(n + 2, nan);
    double expected = 0;  // whole numbers: exact in any order
    for (std::uint64_t i = 1; i <= n; ++i) {
      a[i] = static_cast<double>(i);
      b[i] = static_cast<double>(i % 7) - 3;
      expected += a[i] * b[i];
    }
    EXPECT_EQ(GetParam().transforms->dot(&a[1], &b[1], n), expected) << n;
  }
}

INSTANTIATE_TEST_SUITE_P(Isa, TransformSweeps, testing::ValuesIn(runnableTables()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
