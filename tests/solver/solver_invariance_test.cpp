// What must not change a solution: cache, layout, threads, instruction sets, shrinking, earlier
// solves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/errors.h"
#include "support/pair_machine.h"
#include "support/platform_settings.h"
#include "support/solved_problem.h"

namespace {

using zelsvm::SvmParameters;
using zeltest::Samples;
using zeltest::samplesFor;
using zeltest::SolvedProblem;
using zeltest::train;
using zeltest::Training;

void expectSameBits(const SolvedProblem& a, const SolvedProblem& b) {
  EXPECT_EQ(a.alpha, b.alpha);
  EXPECT_EQ(a.solution.rho, b.solution.rho);
  EXPECT_EQ(a.solution.obj, b.solution.obj);
  EXPECT_EQ(a.solution.r, b.solution.r);
}

void expectSameObjective(const SolvedProblem& a, const SolvedProblem& b) {
  EXPECT_NEAR(a.solution.obj, b.solution.obj, 1e-9 * std::abs(a.solution.obj));
}

// Trains with every setting that must not matter. Gradients that do not start at 0 are sums over
// blocks of rows, whose size follows the cache; other instruction sets and layouts round otherwise
// and may take other ways to the solution, which has to be reached then.
void expectTheSameWithAnySetting(const Samples& samples, const SvmParameters& parameters,
                                 bool reached) {
  const SolvedProblem first = train(samples, parameters).only();
  const auto compare = [&](bool equalBits, const SvmParameters& changed) {
    const SolvedProblem again = train(samples, changed).only();
    equalBits ? expectSameBits(again, first) : expectSameObjective(again, first);
  };
  SvmParameters changed = parameters;
  changed.cacheSize = 0;
  const bool startsAtZero =
      !zeltest::isNu(parameters.svmType) && parameters.svmType != int{zelsvm::SVM_TYPE_ONE_CLASS};
  compare(startsAtZero, changed);
  for (const zeltest::PlatformSetting& setting : zeltest::platformSettings()) {
    SCOPED_TRACE(setting.name);
    if (setting.equalBits || reached)
      setting.apply([&] { compare(setting.equalBits, parameters); });
  }
  changed = parameters;
  changed.sparse = !parameters.sparse;
  if (reached) compare(false, changed);
}

class SolverInvariance : public testing::TestWithParam<int> {
 protected:
  // A nu below what these classes' overlap allows would leave the objective flat.
  SvmParameters parameters{.svmType = GetParam(), .gamma = 0.7, .nu = 0.8, .eps = 1e-8};
};

TEST_P(SolverInvariance, SmallProblems) {
  for (const zelsvm::SVM_KERNEL kernel :
       {zelsvm::SVM_KERNEL_LINEAR, zelsvm::SVM_KERNEL_POLYNOMIAL, zelsvm::SVM_KERNEL_RADIAL}) {
    SCOPED_TRACE(kernel);
    parameters.kernelType = static_cast<int>(kernel);
    expectTheSameWithAnySetting(samplesFor(GetParam(), 130, 4, 1), parameters, true);
  }
}

// More than the last-level cache is taken to hold, so that rows are guessed, even where few
// decimals are packed more tightly, and enough variables for several chunks in every sweep; the
// first steps only.
TEST(LargeProblems, TakeTheSameSteps) {
  struct Case {
    int svmType;
    std::uint64_t rows;
    std::uint64_t cols;
    double eps;
    bool rounded;
  };
  for (const auto& [svmType, rows, cols, eps, rounded] :
       {Case{zelsvm::SVM_TYPE_C_CLASSIFICATION, 17'000, 128, 1.8, true},
        {zelsvm::SVM_TYPE_EPSILON_REGRESSION, 17'000, 64, 3, false},
        {zelsvm::SVM_TYPE_NU_CLASSIFICATION, 240, 4600, 0.4, false}}) {
    Samples samples = samplesFor(svmType, rows, cols, 7);
    for (double& value : samples.values) value = rounded ? std::round(1000 * value) / 1000 : value;
    expectTheSameWithAnySetting(
        samples, {.svmType = svmType, .C = 10, .nu = 0.3, .eps = eps, .sparse = false}, false);
  }
}

TEST_P(SolverInvariance, Shrinking) {
  parameters.eps = 1e-6;
  const Samples samples =
      samplesFor(GetParam(), zeltest::isRegression(GetParam()) ? 2100 : 4200, 4, 3);
  const Training shrunk = train(samples, parameters, zeltest::pairMachine());
  parameters.shrinking = false;
  const Training whole = train(samples, parameters, zeltest::pairMachine());
  EXPECT_NE(shrunk.text.find('*'), std::string::npos);
  EXPECT_EQ(whole.text.find('*'), std::string::npos);
  EXPECT_NE(shrunk.text.find("Finished"), std::string::npos);
  expectSameObjective(shrunk.only(), whole.only());
}

INSTANTIATE_TEST_SUITE_P(Formulations, SolverInvariance, testing::ValuesIn(zeltest::allTypes));

// The largest violation of optimality of the variables with this sign (0: all), the gradient taken
// from the linear kernel's weight vector.
double largestViolation(const SolvedProblem& problem, const Samples& samples, int sign) {
  const std::uint64_t n = samples.rows();
  std::vector<double> weights(samples.cols);
  for (std::size_t t = 0; t < problem.y.size(); ++t)
    for (std::uint64_t c = 0; c < samples.cols; ++c)
      weights[c] += problem.alpha[t] * problem.y[t] * samples.row(t % n)[c];
  double up = -INFINITY;
  double low = INFINITY;
  for (std::size_t t = 0; t < problem.y.size(); ++t) {
    const int y = problem.y[t];
    if (sign != 0 && y != sign) continue;
    const double v =
        -y * problem.p[t] - zeltest::product(weights.data(), samples.row(t % n), samples.cols);
    const double bound = problem.bounds[t];
    if (y > 0 ? problem.alpha[t] < bound : problem.alpha[t] > 0) up = std::max(up, v);
    if (y > 0 ? problem.alpha[t] > 0 : problem.alpha[t] < bound) low = std::min(low, v);
  }
  return up - low;
}

// Several chunks in every sweep and row, with few support vectors.
TEST(LargeProblems, AreSolved) {
  for (const int svmType :
       {int{zelsvm::SVM_TYPE_C_CLASSIFICATION}, int{zelsvm::SVM_TYPE_NU_REGRESSION}}) {
    const bool regression = zeltest::isRegression(svmType);
    Samples samples = samplesFor(svmType, 17'000, 4, 5);
    if (!regression)
      for (std::uint64_t i = 0; i < samples.rows(); ++i)
        samples.labels[i] = samples.row(i)[0] + 0.1 * samples.row(i)[1] > 0.3 ? 1 : -1;
    const SolvedProblem problem = train(samples, {.svmType = svmType,
                                                  .kernelType = zelsvm::SVM_KERNEL_LINEAR,
                                                  .C = 0.1,
                                                  .p = 0.4,
                                                  .nu = 0.05,
                                                  .eps = 0.05})
                                      .only();
    EXPECT_GT(problem.solution.nSV, 100);
    for (const int sign : {1, -1})
      EXPECT_LE(largestViolation(problem, samples, regression ? sign : 0), 0.05 + 1e-9);
  }
}

// Every pair of opposite samples solves this problem at once: the first of each sign do.
TEST(LargeProblems, TiesGoToTheFirstOfAllChunks) {
  Samples samples{1, {}, {}};
  for (int i = 0; i < 40'000; ++i) {
    samples.values.push_back(i % 2 == 0 ? 1 : -1);
    samples.labels.push_back(i % 2 == 0 ? 1 : -1);
  }
  const SolvedProblem problem =
      train(samples, {.kernelType = zelsvm::SVM_KERNEL_LINEAR}, zeltest::pairMachine()).only();
  EXPECT_EQ(problem.alpha[0], 0.5);
  EXPECT_EQ(problem.alpha[1], 0.5);
  EXPECT_EQ(problem.solution.nSV, 2);
}

// A solver keeps buffers, but no state, from problems of other sizes and from failures.
template <typename Trainer, typename Solver>
void solveRepeatedly(int svmType) {
  zeltest::Trainings<Trainer, Solver> trainings({.svmType = svmType, .cacheSize = 0});
  Samples bad = samplesFor(svmType, 60, 4, 6);
  trainings.run(bad);
  for (double& value : bad.values) value = NAN;
  EXPECT_THROW(trainings.run(bad), zel::AppException);
  for (const std::uint64_t rows : {700, 30, 60, 700})
    trainings.run(samplesFor(svmType, rows, 4, 6));
  expectSameBits(trainings.problems()[3], trainings.problems()[0]);
  expectSameBits(trainings.problems()[4], trainings.problems()[1]);
}

TEST(SolverReuse, LeavesNoTrace) {
  solveRepeatedly<zelsvm::CoreSvmClassifier<double>, zelsvm::SmoCoreSolver<double>>(
      zelsvm::SVM_TYPE_C_CLASSIFICATION);
  solveRepeatedly<zelsvm::OneClassSvm<double>, zelsvm::SmoCoreSolver<double>>(
      zelsvm::SVM_TYPE_ONE_CLASS);
  solveRepeatedly<zelsvm::NuSvmRegressor<double>, zelsvm::SmoNuSolver<double>>(
      zelsvm::SVM_TYPE_NU_REGRESSION);
}

}  // namespace
