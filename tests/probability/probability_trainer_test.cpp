// Probability parameters of trained models.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "base/errors.h"
#include "probability/probability_trainers.h"
#include "runs/processor.h"
#include "support/solved_problem.h"
#include "support/temp_file.h"
#include "support/tested_machine.h"

namespace {

using zelsvm::LabelPair;
using zelsvm::laplaceScale;
using zelsvm::SvmParameters;
using zeltest::classSamples;
using zeltest::hostVector;
using zeltest::Samples;
using zeltest::valuesOf;
using Values = std::vector<double>;
using Model = zelsvm::GenericModel<double>;

TEST(LaplaceScale, LeavesOutliersOut) {
  EXPECT_EQ(laplaceScale(hostVector<double>({1, 2, 3}), {}), 2);
  Values residuals(19, 1);
  residuals.push_back(100);  // the limit is 5 sqrt(2) (119 / 20) = 42.07
  EXPECT_EQ(laplaceScale(hostVector(residuals), {}), 1);
  EXPECT_EQ(laplaceScale<double>(hostVector<double>({1, 100}), Values{19, 1}), 1);
  residuals.back() = 10.39;  // 10.391
  EXPECT_NEAR(laplaceScale(hostVector(residuals), {}), 29.39 / 20, 1e-14);
  EXPECT_EQ(laplaceScale(hostVector<double>({0, 0, 0}), {}), -1);
  EXPECT_EQ(laplaceScale(hostVector<double>({1, std::numeric_limits<double>::quiet_NaN()}), {}),
            -1);
}

class ProbabilityTraining : public testing::Test {
 protected:
  void train(Model& model, const Samples& samples, const SvmParameters& parameters,
             bool probability) {
    const zeltest::CapturedOutput quiet;
    zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                       zeltest::testedMachine());
    zeltest::DataSet set(samples, context);
    zelsvm::GenericProcessor<double>(context).train(model, set.data(), probability);
  }
};

TEST_F(ProbabilityTraining, LeavesTheModelAsItIsWithout) {
  for (const int type : zeltest::allTypes)
    for (const int kernel : zeltest::allKernels)
      for (const bool sparse : {false, true}) {
        if (type == int{zelsvm::SVM_TYPE_ONE_CLASS}) continue;  // has no probabilities
        const bool regression = zeltest::isRegression(type);
        const SvmParameters parameters{
            .svmType = type, .kernelType = kernel, .gamma = 0.3, .nu = 0.7, .sparse = sparse};
        const Samples samples =
            regression ? zeltest::targetSamples(60, 3, 5) : classSamples(241, 3, {3, 1, 2}, 4);
        Model plain;
        Model model;
        train(plain, samples, parameters, false);
        train(model, samples, parameters, true);
        EXPECT_TRUE(model.probability && !plain.probability);
        EXPECT_EQ(valuesOf(model.rho()), valuesOf(plain.rho())) << type << kernel << sparse;
        EXPECT_EQ(valuesOf(model.coefficients()), valuesOf(plain.coefficients()));
        EXPECT_EQ(model.sigma > 0, regression);
        std::vector<LabelPair> pairs;
        for (const auto& [pair, sigmoid] : model.sigmoids) {
          pairs.push_back(pair);
          EXPECT_LT(sigmoid.A, 0) << "the first label's side is positive";
        }
        EXPECT_EQ(pairs, !regression ? (std::vector<LabelPair>{{1, 2}, {1, 3}, {2, 3}})
                                     : std::vector<LabelPair>());
      }
}

// The folds of two samples predict the other sample's label.
TEST_F(ProbabilityTraining, OfFewSamples) {
  Model model;
  train(model, {1, {1, 2}, {-1, 1}}, {}, true);
  EXPECT_NEAR(model.sigmoids.at({-1, 1}).A, -std::numbers::ln2, 1e-5);
  Model oneLabel;
  train(oneLabel, {1, {1, 2, 3}, {4, 4, 4}}, {}, true);
  EXPECT_EQ(oneLabel.sigmoids.at({4, -4}).A, 0);
  EXPECT_NEAR(oneLabel.sigmoids.at({4, -4}).B, -std::log(4), 1e-15);
  // Without its only sample a label has no side of its own.
  Model lone;
  EXPECT_EQ(zeltest::failureOf<zel::AppException>([&] {
              train(lone, {1, {1, 2, 3, 4}, {1, -1, -1, -1}}, {}, true);
            }),
            "Failed to optimize the svm.");
}

}  // namespace
