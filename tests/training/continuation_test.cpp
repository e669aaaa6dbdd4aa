// Trainings that begin where others ended, or anywhere.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/solved_problem.h"
#include "training/generic_trainer.h"

namespace {

using zelsvm::SvmParameters;
using zeltest::Samples;
using zeltest::SolvedProblem;
using zeltest::train;
using zeltest::Training;
using Numbers = std::vector<double>;

std::uint64_t iterationsOf(const std::string& text) {
  std::uint64_t sum = 0;
  const std::string before = "Finished optimization in ";
  for (std::size_t at = text.find(before); at != std::string::npos; at = text.find(before, at + 1))
    sum += std::stoull(text.substr(at + before.size()));
  return sum;
}

// As a model has them.
Numbers coefficientsOf(const SolvedProblem& problem, std::uint64_t samples, double factor) {
  Numbers coefficients(samples);
  for (std::size_t k = 0; k < problem.y.size(); ++k)
    coefficients[k % samples] += factor * problem.y[k] * problem.alpha[k];
  return coefficients;
}

class Continuation : public testing::TestWithParam<std::tuple<int, std::uint64_t>> {
 protected:
  Continuation() {
    samples = zeltest::samplesFor(parameters.svmType, std::get<1>(GetParam()), 3, 9);
    for (std::uint64_t i = 0; i < samples.rows(); ++i)
      samples.weights.push_back(0.25 * static_cast<double>(2 + i % 7 % 3));
    usual = train(samples, parameters);
    const double r = usual.only().solution.r;
    const bool isScaled = parameters.svmType == int{zelsvm::SVM_TYPE_NU_CLASSIFICATION};
    coefficients = coefficientsOf(usual.only(), samples.rows(), isScaled ? 1 / r : 1);
  }

  // The start is feasible, and the end is that of the usual start.
  std::uint64_t iterationsFrom(const Numbers& start) {
    samples.start = start;
    const Training training = train(samples, parameters);
    const SolvedProblem& found = training.only();
    const SolvedProblem& expected = usual.only();
    double sums[2] = {};
    for (std::size_t k = 0; k < found.y.size(); ++k) {
      EXPECT_GE(found.start[k], 0);
      EXPECT_LE(found.start[k], found.bounds[k]);
      const int group = zeltest::isNu(parameters.svmType) && found.y[k] < 0 ? 1 : 0;
      sums[group] += found.y[k] * (found.start[k] - expected.start[k]);
    }
    for (const double sum : sums) EXPECT_NEAR(sum, 0, 1e-11 * static_cast<double>(found.y.size()));
    EXPECT_NEAR(found.solution.obj, expected.solution.obj,
                parameters.eps * (found.solution.alphaSum + expected.solution.alphaSum));
    return iterationsOf(training.text);
  }

  SvmParameters parameters{
      .svmType = std::get<0>(GetParam()), .gamma = 0.4, .C = 1, .nu = 0.7, .eps = 1e-5};
  Samples samples{};
  Training usual;
  Numbers coefficients;
};

TEST_P(Continuation, OfTheSolutionEndsAtOnce) {
  EXPECT_GT(iterationsOf(usual.text), 50);
  EXPECT_LE(iterationsFrom(coefficients), 3);
}

// A few samples lose their multipliers, so that the sums fit no more.
TEST_P(Continuation, OfANearSolutionSavesIterations) {
  for (std::size_t i = samples.rows() - samples.rows() / 50; i < samples.rows(); ++i)
    coefficients[i] = 0;
  EXPECT_LT(iterationsFrom(coefficients), iterationsOf(usual.text));
}

TEST_P(Continuation, OfAnythingEndsAtTheSolution) {
  std::mt19937 generator(1);
  for (const double magnitude : {1e-6, 1.0, 1e300}) {
    for (double& c : coefficients)
      c = magnitude * (static_cast<double>(generator() % 2001) / 1000 - 1);
    iterationsFrom(coefficients);
  }
  iterationsFrom(Numbers(samples.rows()));
  Numbers one(samples.rows());
  one[samples.rows() / 2] = -7;
  iterationsFrom(one);
}

// One size for the solver of pairs, one for that of working sets.
INSTANTIATE_TEST_SUITE_P(All, Continuation,
                         testing::Combine(testing::ValuesIn(zeltest::allTypes),
                                          testing::Values(200u, 1600u)));

TEST(MulticlassContinuation, GivesEachPairItsCoefficients) {
  Samples samples = zeltest::classSamples(120, 3, {5, 1, 3, 2}, 3);
  const zelsvm::SvmContext<double> context({.C = 3}, zelsvm::ParameterChecks::training,
                                           zeltest::testedMachine());
  const auto trainFrom = [&](zelsvm::GenericModel<double>& model) {
    zeltest::DataSet set(samples, context);
    return train(context, set.data(), model).text;
  };
  zelsvm::GenericModel<double> model;
  const std::string usual = trainFrom(model);
  const auto rows = zeltest::valuesOf(model.vectors().rowIds());
  zelsvm::HostVector<double> ofPair(rows.size());
  for (std::uint64_t a = 0; a < 4; ++a)
    for (std::uint64_t b = a + 1; b < 4; ++b) {
      model.pairCoefficients(ofPair, a, b);
      const std::size_t first = samples.start.size();
      samples.start.resize(first + 120);
      for (std::size_t v = 0; v < rows.size(); ++v) samples.start[first + rows[v]] = ofPair[v];
    }
  zelsvm::GenericModel<double> again;
  EXPECT_GT(iterationsOf(usual), 100);
  EXPECT_LE(iterationsOf(trainFrom(again)), 12);
  EXPECT_EQ(again.vectors().rows(), rows.size());
}

}  // namespace
