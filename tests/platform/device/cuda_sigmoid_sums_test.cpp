// The sums of a sigmoid fit on a device beside plain ones.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "platform/cuda/machine/cuda_machine.h"

namespace {

struct Sums {
  long double loss = 0, g1 = 0, g2 = 0, h11 = 0, h21 = 0, h22 = 0;
};

Sums plainSums(const std::vector<double>& d, const std::vector<double>& t,
               const std::vector<double>& weights, double A, double B) {
  Sums sums;
  for (std::size_t i = 0; i < d.size(); ++i) {
    const long double f = static_cast<long double>(A) * d[i] + B;
    const long double p = 1 / (1 + std::exp(f));
    const long double q = p * (1 - p);
    const long double w = weights.empty() ? 1 : weights[i];
    sums.loss -= w * (t[i] * std::log(p) + (1 - t[i]) * (f + std::log(p)));
    sums.g1 += w * d[i] * (t[i] - p);
    sums.g2 += w * (t[i] - p);
    sums.h11 += w * d[i] * d[i] * q;
    sums.h21 += w * d[i] * q;
    sums.h22 += w * q;
  }
  return sums;
}

void expectNear(double value, long double expected) {
  EXPECT_NEAR(value, static_cast<double>(expected),
              1e-11 * (1 + std::fabs(static_cast<double>(expected))));
}

TEST(CudaSigmoidSums, AgreeWithPlainSums) {
  const zelsvm::CudaMachine machine(0);
  const auto sums = machine.makeSigmoidSums();
  std::mt19937 generator(1);
  std::uniform_real_distribution<double> uniform(0, 1);
  for (const std::size_t n : {700, 1, 127, 128, 129, 513, 2000}) {  // larger and smaller again
    SCOPED_TRACE(n);
    std::vector<double> d(n);
    std::vector<double> t(n);
    std::vector<double> weights(n % 2 == 0 ? n : 0);
    for (std::size_t i = 0; i < n; ++i) {
      d[i] = 20 * uniform(generator) - 10;
      t[i] = uniform(generator);
    }
    for (double& weight : weights) weight = 2 * uniform(generator);
    sums->assign(d, t, weights);
    for (const auto& [A, B] : {std::pair(-0.7, 0.1), std::pair(0.0, 0.4), std::pair(2.0, -3.0)}) {
      const Sums expected = plainSums(d, t, weights, A, B);
      for (int again = 0; again < 2; ++again) {
        expectNear(sums->loss(A, B), expected.loss);
        const auto [g1, g2, h11, h21, h22] = sums->derivatives(A, B);
        expectNear(g1, expected.g1);
        expectNear(g2, expected.g2);
        expectNear(h11, expected.h11);
        expectNear(h21, expected.h21);
        expectNear(h22, expected.h22);
      }
    }
  }
}

}  // namespace
