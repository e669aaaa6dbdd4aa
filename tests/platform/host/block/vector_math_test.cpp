// Functions of lanes: right to 2 units in the last place wherever they are asked, and the same bits
// on all instruction sets that fuse multiply-adds.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/host/isa.h"
#include "platform/host/isa/vector_math_table.h"
#include "support/host_vectors.h"

namespace {

using zelsvm::HostVector;

struct Build {
  std::string name;
  const zeltest::VectorMath* math;
};

std::vector<Build> runnableBuilds() {
  std::vector<Build> builds{{"baseline", &zelsvm::baseline::vectorMathTable}};
#ifdef __x86_64__
  if (zel::processorIsa() >= zel::Isa::avx2)
    builds.push_back({"avx2", &zelsvm::avx2::vectorMathTable});
  if (zel::processorIsa() >= zel::Isa::avx512)
    builds.push_back({"avx512", &zelsvm::avx512::vectorMathTable});
#endif
  return builds;
}

// Spread evenly and by magnitude, the ends of all ranges, and what is no number.
template <typename T>
std::vector<T> arguments(double lower, double upper) {
  std::mt19937_64 generator(5);
  std::uniform_real_distribution<double> even(lower, upper);
  std::uniform_int_distribution<int> exponent(0, 70);
  using Limits = std::numeric_limits<T>;
  std::vector<T> values{0,
                        T{-0.0},
                        Limits::infinity(),
                        -Limits::infinity(),
                        Limits::quiet_NaN(),
                        Limits::max(),
                        Limits::lowest(),
                        Limits::min(),
                        Limits::denorm_min(),
                        T(709.782712893384),
                        T(709.7827128933842),
                        T(-745.1332191019411),
                        T(-745.1332191019413),
                        T(-708.4),
                        1,
                        -1};
  while (values.size() < 40000) {
    values.push_back(static_cast<T>(even(generator)));
    values.push_back(static_cast<T>(std::ldexp(even(generator), -exponent(generator))));
  }
  return values;
}

// In units in the last place of what is right; infinite where a special value is wrong.
template <typename T>
double error(T value, long double right) {
  const T nearest = static_cast<T>(right);
  if (std::isnan(nearest)) return std::isnan(value) ? 0 : std::numeric_limits<double>::infinity();
  if (std::signbit(value) != std::signbit(nearest)) return std::numeric_limits<double>::infinity();
  if (value == nearest) return 0;
  const T magnitude = std::fabs(nearest);
  const T unit = std::nextafter(magnitude, std::numeric_limits<T>::infinity()) - magnitude;
  return static_cast<double>(std::fabs(static_cast<long double>(value) - right) /
                             static_cast<long double>(unit));
}

template <typename T>
using Function = void (*zeltest::VectorMath::*)(T* values, std::uint64_t count);

template <typename T>
void expectRight(const std::vector<T>& arguments, Function<T> function,
                 long double (*exact)(long double)) {
  std::vector<T> fused;
  for (const Build& build : runnableBuilds()) {
    HostVector<T> results = zeltest::hostVector(arguments);
    (build.math->*function)(results.data(), results.size());
    double worst = 0;
    T at{};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const double found = error(results[i], exact(arguments[i]));
      if (!(found <= worst)) at = arguments[i], worst = found;
    }
    EXPECT_LE(worst, 2) << build.name << " at " << static_cast<double>(at);
#ifdef __x86_64__
    if (build.name == "baseline") continue;
#endif
    for (std::size_t i = 0; i < fused.size(); ++i) {
      const bool same = results[i] == fused[i] || std::isnan(fused[i]);
      ASSERT_TRUE(same) << build.name << " at " << static_cast<double>(arguments[i]);
    }
    fused = zeltest::valuesOf(results);
  }
}

TEST(VectorMath, IsRightToTwoUnits) {
  const auto exp = [](long double x) { return std::exp(x); };
  const auto tanh = [](long double x) { return std::tanh(x); };
  const auto log = [](long double x) { return std::log(x); };
  for (const double range : {1.0, 750.0}) {
    expectRight<double>(arguments<double>(-range, range), &zeltest::VectorMath::exp, exp);
    expectRight<float>(arguments<float>(-range / 7, range / 7), &zeltest::VectorMath::floatExp,
                       exp);
    expectRight<double>(arguments<double>(-range / 30, range / 30), &zeltest::VectorMath::tanh,
                        tanh);
    expectRight<float>(arguments<float>(-range / 50, range / 50), &zeltest::VectorMath::floatTanh,
                       tanh);
  }
  expectRight<double>(arguments<double>(-0.5, 4), &zeltest::VectorMath::log, log);
  expectRight<double>(arguments<double>(0.99, 1.01), &zeltest::VectorMath::log, log);
  expectRight<double>(arguments<double>(0, 1e308), &zeltest::VectorMath::log, log);
}

}  // namespace
