// From decision values to class probabilities.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"
#include "probability/joint_probability.h"
#include "probability/probability_resolvers.h"
#include "support/host_vectors.h"
#include "support/temp_file.h"

namespace {

using zelsvm::HostVector;
using zelsvm::JointProbability;
using zeltest::failureOf;
using zeltest::hostVector;
using zeltest::valuesOf;
using Values = std::vector<double>;

Values coupled(std::uint64_t classes, const Values& pairwise, std::uint32_t maxIterations = 100) {
  return valuesOf(
      JointProbability<double>(classes, maxIterations, 0.005).couple(hostVector(pairwise)));
}

void expectNear(const Values& a, const Values& b, double tolerance) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tolerance) << i;
}

// Worked out step by step from the rule.
const Values ofThree{0.175043590581110, 0.143836374653496, 0.681120034765395};

TEST(JointProbability, CouplesPairsInSoManySteps) {
  const auto check = [](const Values& probabilities, const Values& pairwise, std::uint32_t steps) {
    const std::uint64_t k = probabilities.size();
    expectNear(coupled(k, pairwise, steps), probabilities, 1e-14);
    EXPECT_EQ(failureOf<zel::AppException>([&] { coupled(k, pairwise, steps - 1); }),
              "Non-convergence in joint probability estimate.");
  };
  check({0.716670025584632, 0.283329974415368}, {0.8}, 3);
  check({0.378527157183280, 0.621472842816720}, {0.5}, 4);
  check(ofThree, {0.9, 0.2, 0.4}, 5);
  // Six pairs allow six steps.
  expectNear(coupled(4, {0.7, 0.6, 0.9, 0.35, 0.5, 0.8}, 1),
             {0.331037309913906, 0.158551651744483, 0.384513225226657, 0.125897813114955}, 1e-14);
}

class Probabilities : public testing::Test {
 protected:
  // One list of decision values per pair; the probabilities stay in matrix.
  Values predict(const Values& labels, const std::vector<zelsvm::Sigmoid>& sigmoids,
                 const std::vector<Values>& decisions) {
    zelsvm::GenericModel<double> model;
    model.setLabels(hostVector(labels));
    zelsvm::forEachLabelPair(model.labels(), [&](std::uint64_t t, const zelsvm::LabelPair& pair) {
      if (t < sigmoids.size()) model.sigmoids.emplace(pair, sigmoids[t]);
    });
    Values all;
    for (const auto& pair : decisions) all.insert(all.end(), pair.begin(), pair.end());
    HostVector<double> output(decisions[0].size());
    HostVector<double> probabilities(output.size() * labels.size());
    zelsvm::MulticlassProbabilityEstimator<double>(probabilities)
        .handle(output, hostVector(all), model);
    matrix = valuesOf(probabilities);
    return valuesOf(output);
  }
  Values matrix;
};

TEST_F(Probabilities, LieSampleBySampleInLabelOrder) {
  // x(r) makes r of a pair.
  const auto x = [](double r) { return std::log(1 / r - 1); };
  EXPECT_EQ(predict({7, -3}, {{-2, 1}}, {{(1 - x(0.8)) / 2, 0.5}}), (Values{7, -3}));
  expectNear(matrix, {0.716670025584632, 0.283329974415368, 0.378527157183280, 0.621472842816720},
             1e-14);
  EXPECT_EQ(
      predict({1, 2, 5}, {{1, 0}, {-1, 0}, {1, 2}}, {{x(0.9), 9}, {-x(0.2), 9}, {x(0.4) - 2, -9}}),
      (Values{5, 2}));
  expectNear({matrix.begin(), matrix.begin() + 3}, ofThree, 1e-14);
}

TEST_F(Probabilities, AreKeptFromTheirLimits) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const Values high = coupled(2, {1 - 1e-7});
  const Values low = coupled(2, {1e-7});
  for (const double d : {16.2, 800.0, 1e300, infinity}) {
    EXPECT_EQ(predict({1, 2}, {{-1, 0}}, {{d, -d, nan}}), (Values{1, 2, 2})) << d;
    EXPECT_EQ(matrix, (Values{high[0], high[1], low[0], low[1], low[0], low[1]})) << d;
  }
}

TEST_F(Probabilities, NeedASigmoidForEveryPair) {
  EXPECT_EQ(failureOf<zel::AppException>([&] {
              predict({20261123, 2.5, -3}, {{-1, 0}}, {{1}, {1}, {1}});
            }),
            "Failed to find probability sigmoid for labels (20261123, -3)");
}

}  // namespace
