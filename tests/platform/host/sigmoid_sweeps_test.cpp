// Sums of the sigmoid fit in every build, against plain loops.
#include "platform/host/sweeps/sigmoid_sweeps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "platform/host/isa.h"

namespace {

using Real = long double;
using zel::Isa;

struct Samples {
  std::vector<double> decisions;
  std::vector<double> targets;
  std::vector<double> weights;
};

// What stands behind the last one must not count.
Samples samplesAndMore(std::uint64_t n) {
  std::mt19937 generator(7);
  std::normal_distribution<double> normal(0, 3);
  Samples samples;
  for (std::uint64_t i = 0; i < n; ++i) {
    samples.decisions.push_back(normal(generator));
    samples.targets.push_back(i % 3 == 0 ? 0.9 : 0.05);
    samples.weights.push_back(0.25 * static_cast<double>(1 + i % 5));
  }
  samples.decisions.resize(n + 8, std::numeric_limits<double>::quiet_NaN());
  samples.targets.resize(n + 8, std::numeric_limits<double>::quiet_NaN());
  samples.weights.resize(n + 8, std::numeric_limits<double>::quiet_NaN());
  return samples;
}

std::vector<double> sums(const Samples& samples, std::uint64_t n, double A, double B) {
  const double* const d = samples.decisions.data();
  const double* const t = samples.targets.data();
  const double* const w = samples.weights.data();
  const auto derivatives = zelsvm::sigmoidSweeps().hessian(d, t, w, n, A, B);
  return {zelsvm::sigmoidSweeps().functional(d, t, w, n, A, B),
          derivatives.g1,
          derivatives.g2,
          derivatives.h11,
          derivatives.h21,
          derivatives.h22};
}

// Each sum, and then the sums of the terms' magnitudes.
std::vector<Real> slowSums(const Samples& samples, std::uint64_t n, Real A, Real B) {
  std::vector<Real> result(12);
  for (std::uint64_t i = 0; i < n; ++i) {
    const Real d = samples.decisions[i];
    const Real t = samples.targets[i];
    const Real p = 1 / (1 + std::exp(A * d + B));
    const Real spread = p * (1 - p);
    const Real terms[] = {-t * std::log(p) - (1 - t) * std::log1p(-p),
                          d * (t - p),
                          t - p,
                          d * d * spread,
                          d * spread,
                          spread};
    for (std::size_t k = 0; k < 6; ++k) {
      result[k] += samples.weights[i] * terms[k];
      result[k + 6] += samples.weights[i] * std::fabs(terms[k]);
    }
  }
  return result;
}

TEST(SigmoidSweeps, AreRightAndHaveTheSameBitsInEveryBuild) {
  for (const std::uint64_t n : {0, 1, 3, 7, 8, 9, 16, 1003})
    for (const double A : {-1.3, 0.0, 0.7}) {
      const Samples samples = samplesAndMore(n);
      const std::vector<Real> slow = slowSums(samples, n, A, 0.4);
      std::vector<double> fused;
      for (const Isa isa : {Isa::baseline, Isa::avx2, Isa::avx512}) {
        const zel::IsaLimit limit(isa);
        if (zel::processorIsa() != isa) continue;
        SCOPED_TRACE(testing::Message() << n << " samples, A " << A << ", set " << int(isa));
        const std::vector<double> found = sums(samples, n, A, 0.4);
        for (std::size_t k = 0; k < 6; ++k)
          EXPECT_NEAR(found[k], static_cast<double>(slow[k]),
                      static_cast<double>(slow[k + 6]) * 1e-14)
              << k;
        if (isa == Isa::baseline) continue;
        if (!fused.empty()) {
          EXPECT_EQ(found, fused);
        }
        fused = found;
      }
    }
}

}  // namespace
