// What each formulation hands to the solver, prints and makes of the result.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/solved_problem.h"
#include "support/tested_machine.h"
#include "training/generic_trainer.h"

namespace {

using zelsvm::GenericModel;
using zelsvm::ParameterChecks;
using zelsvm::SvmContext;
using zelsvm::SvmParameters;
using zeltest::DataSet;
using zeltest::Samples;
using zeltest::SolvedProblem;
using zeltest::train;
using zeltest::Training;
using zeltest::valuesOf;
using Numbers = std::vector<double>;

SolvedProblem problemOf(const Samples& samples, const SvmParameters& parameters) {
  return train(samples, parameters).only();
}

Samples line(const Numbers& labels) {
  Samples samples{1, {}, labels};
  for (std::size_t i = 0; i < labels.size(); ++i)
    samples.values.push_back(static_cast<double>(i % 7) + 0.125 * static_cast<double>(i));
  return samples;
}

TEST(Formulations, SignsFollowTheSmallerLabel) {
  const SolvedProblem problem = problemOf(line({5, -2, 5, -2}), {});
  EXPECT_EQ(problem.y, (std::vector<int>{-1, 1, -1, 1}));
  EXPECT_EQ(problem.p, (Numbers{-1, -1, -1, -1}));
  EXPECT_EQ(problem.start, (Numbers{0, 0, 0, 0}));
}

TEST(Formulations, NuClassificationStartsWithABudgetPerClass) {
  const SolvedProblem problem =
      problemOf(line({1, 2, 2, 1, 1, 1, 2, 2, 1, 2}),
                {.svmType = zelsvm::SVM_TYPE_NU_CLASSIFICATION, .C = 3, .nu = 0.5});
  EXPECT_EQ(problem.start, (Numbers{1, 1, 1, 1, 0.5, 0, 0.5, 0, 0, 0}));
  EXPECT_EQ(problem.p, Numbers(10));
  EXPECT_EQ(problem.Cp, 3);  // the cap of the start is 1 all the same
}

TEST(Formulations, OneClassDropsTheFraction) {
  const Samples samples = line(Numbers(10, 7));
  Numbers expected(10);
  expected[0] = expected[1] = 1;
  const SolvedProblem problem =
      problemOf(samples, {.svmType = zelsvm::SVM_TYPE_ONE_CLASS, .C = 9, .nu = 0.25});
  EXPECT_EQ(problem.start, expected);
  EXPECT_EQ(problem.y, std::vector<int>(10, 1));
  EXPECT_EQ(problem.Cp, 1);
  EXPECT_EQ(problem.Cn, 1);
}

TEST(Formulations, RegressionHasTwoVariablesPerSample) {
  const Samples samples = line({0.5, -2, 1});
  const SolvedProblem epsilon =
      problemOf(samples, {.svmType = zelsvm::SVM_TYPE_EPSILON_REGRESSION, .p = 0.25});
  EXPECT_EQ(epsilon.p, (Numbers{-0.25, 2.25, -0.75, 0.75, -1.75, 1.25}));
  EXPECT_EQ(epsilon.y, (std::vector<int>{1, 1, 1, -1, -1, -1}));
  EXPECT_EQ(epsilon.start, Numbers(6));
  const SolvedProblem nu =
      problemOf(samples, {.svmType = zelsvm::SVM_TYPE_NU_REGRESSION, .C = 2, .nu = 0.875});
  EXPECT_EQ(nu.p, (Numbers{-0.5, 2, -1, 0.5, -2, 1}));
  EXPECT_EQ(nu.start, (Numbers{2, 0.625, 0, 2, 0.625, 0}));
}

std::string formatted(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

class FormulationModel : public testing::TestWithParam<int> {};

TEST_P(FormulationModel, FollowsTheMultipliersAndIsReported) {
  const int type = GetParam();
  const bool regression = zeltest::isRegression(type);
  SvmContext<double> context({.svmType = type, .C = 1.5, .nu = 0.4}, ParameterChecks::training,
                             zeltest::testedMachine());
  const Samples samples =
      regression ? zeltest::targetSamples(30, 3, 2) : zeltest::classSamples(30, 3, {4, 2}, 2);
  DataSet set(samples, context);
  GenericModel<double> model;
  const Training training = train(context, set.data(), model);
  const SolvedProblem& problem = training.only();
  const zelsvm::SmoSolution& solution = problem.solution;
  const double r = type == int{zelsvm::SVM_TYPE_NU_CLASSIFICATION} ? solution.r : 1;

  std::vector<unsigned long long> rows;  // of the support vectors, the positive ones first
  Numbers coefficients;
  std::uint64_t positives = 0;
  for (const int sign : {1, -1})
    for (std::uint64_t i = 0; i < 30; ++i) {
      const double a = problem.alpha[i] - (regression ? problem.alpha[i + 30] : 0);
      if (a == 0 || (sign != problem.y[i])) continue;
      rows.push_back(i);
      coefficients.push_back(sign * (a / r));
      positives += sign > 0;
    }
  EXPECT_EQ(valuesOf(model.vectors().rowIds()), rows);
  EXPECT_EQ(valuesOf(model.coefficients()), coefficients);
  EXPECT_EQ(valuesOf(model.rho()), Numbers{solution.rho / r});
  EXPECT_EQ(model.hasLabels(), !regression);
  if (!regression) {
    EXPECT_EQ(valuesOf(model.labels()),
              type == int{zelsvm::SVM_TYPE_ONE_CLASS} ? (Numbers{1, -1}) : (Numbers{2, 4}));
    EXPECT_EQ(valuesOf(model.classSizes()),
              (std::vector<unsigned long long>{positives, rows.size() - positives}));
  }

  const std::string first[] = {formatted("nu = %g\n", solution.alphaSum / (1.5 * 30)),
                               formatted("C = %g\n", 1 / solution.r), "",
                               formatted("nu = %g\n", solution.alphaSum / (30 * 1.5)),
                               formatted("epsilon = %g\n", -solution.r)};
  const std::string report = first[type] + formatted("obj = %g, ", solution.obj / (r * r)) +
                             formatted("rho = %g\n", solution.rho / r) +
                             "nSV = " + std::to_string(solution.nSV) +
                             ", nBSV = " + std::to_string(solution.nBSV) + "\n";
  EXPECT_EQ(training.text.substr(training.text.find("iterations\n\n\n") + 13), report);
}

INSTANTIATE_TEST_SUITE_P(All, FormulationModel, testing::ValuesIn(zeltest::allTypes));

}  // namespace
