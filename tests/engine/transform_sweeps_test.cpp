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

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t counts[] = {0, 1, 2, 3, 7, 8, 9, 63, 64, 65, 1000};

// The C library's vector functions are that far from the scalar ones at most.
constexpr std::int64_t vectorMathUlps = 4;

// Representable numbers from one to the other; NaN equals NaN only.
std::int64_t ulpsApart(double a, double b) {
  if (std::isnan(a) || std::isnan(b))
    return std::isnan(a) && std::isnan(b) ? 0 : std::numeric_limits<std::int64_t>::max();
  const auto ordered = [](double x) {
    const auto bits = std::bit_cast<std::int64_t>(std::abs(x));
    return std::signbit(x) ? -bits : bits;
  };
  return std::abs(ordered(a) - ordered(b));
}

std::vector<double> randomNumbers(std::uint64_t count, double low, double high, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(low, high);
  std::vector<double> numbers(count);
  for (double& number : numbers) number = uniform(generator);
  return numbers;
}

// Runs the transform on a copy with a guard at either end, off every alignment.
template <typename Transform>
std::vector<double> transformed(const std::vector<double>& input, const Transform& transform) {
  std::vector<double> guarded(input.size() + 2, 77);
  std::copy(input.begin(), input.end(), guarded.begin() + 1);
  transform(guarded.data() + 1, input.size());
  EXPECT_EQ(guarded.front(), 77);
  EXPECT_EQ(guarded.back(), 77);
  return {guarded.begin() + 1, guarded.end() - 1};
}

class TransformSweeps : public testing::TestWithParam<IsaTables> {};

TEST_P(TransformSweeps, PolynomialPowers) {
  for (const std::uint64_t n : counts)
    for (const unsigned degree : {1u, 2u, 3u, 7u, 10u}) {
      const std::vector<double> x = randomNumbers(n, -3, 3, degree);
      const auto values = transformed(x, [&](double* m, std::uint64_t count) {
        GetParam().transforms->polynomial(m, count, 0.3, -0.7, degree);
      });
      for (std::uint64_t i = 0; i < n; ++i) {
        const double t = GetParam().fma(0.3, x[i], -0.7);
        long double power = 1;
        for (unsigned d = 0; d < degree; ++d) power *= t;
        EXPECT_LE(ulpsApart(values[i], static_cast<double>(power)), 2 * degree) << x[i];
        EXPECT_TRUE(sameNumber(values[i], zelsvm::binaryPower(t, degree, 1.0)));
      }
    }
}

TEST_P(TransformSweeps, DegreeZeroReadsNothing) {
  const auto values = transformed({nan, infinity, 0, 1, 2}, [&](double* m, std::uint64_t count) {
    GetParam().transforms->polynomial(m, count, nan, 1, 0);
  });
  EXPECT_EQ(values, std::vector<double>(5, 1));
}

TEST_P(TransformSweeps, RadialValues) {
  for (const std::uint64_t n : counts) {
    const std::vector<double> x = randomNumbers(n, -1, 1, 3);
    const std::vector<double> norms = randomNumbers(n, 0, 1500, 4);  // down to the smallest values
    const auto values = transformed(x, [&](double* m, std::uint64_t count) {
      GetParam().transforms->radial(m, norms.data(), count, -0.5, 0.25);
    });
    for (std::uint64_t i = 0; i < n; ++i) {
      const double expected = std::exp(-0.5 * ((0.25 + norms[i]) - 2 * x[i]));
      EXPECT_LE(ulpsApart(values[i], expected), vectorMathUlps) << norms[i];
    }
  }
}

TEST_P(TransformSweeps, RadialLimits) {
  const std::vector<double> x{0, 0, -1e9, 1e9, nan, 1, infinity, 0, 0.5};
  const std::vector<double> norms{0, 1e6, 0, 0, 1, 1, 0, infinity, 0};
  const auto values = transformed(x, [&](double* m, std::uint64_t count) {
    GetParam().transforms->radial(m, norms.data(), count, -1, 1);
  });
  const double expected[] = {std::exp(-1), 0, 0, infinity, nan, 1, infinity, 0, 1};
  for (std::size_t i = 0; i < x.size(); ++i)
    EXPECT_LE(ulpsApart(values[i], expected[i]), vectorMathUlps) << i;
}

TEST_P(TransformSweeps, SigmoidValues) {
  for (const std::uint64_t n : counts)
    for (const double scale : {1e-9, 0.5, 30.0}) {
      std::vector<double> x = randomNumbers(n, -1, 1, 5);
      if (n == 1000) std::copy_n(std::vector<double>{infinity, -infinity, nan, 0}.data(), 4, &x[9]);
      const auto values = transformed(x, [&](double* m, std::uint64_t count) {
        GetParam().transforms->sigmoid(m, count, scale, scale / 8);
      });
      for (std::uint64_t i = 0; i < n; ++i)
        EXPECT_LE(ulpsApart(values[i], std::tanh(GetParam().fma(scale, x[i], scale / 8))),
                  vectorMathUlps)
            << x[i] << " times " << scale;
    }
}

TEST_P(TransformSweeps, WeightedSumsTakeEveryTerm) {
  for (const std::uint64_t n : counts) {
    std::vector<double> a(n + 2, nan);
    std::vector<double> b(n + 2, nan);
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
