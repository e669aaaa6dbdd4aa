// What must not change a solution: cache, layout, threads, shrinking, earlier solves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "support/solved_problem.h"
#include "support/thread_limit.h"
#include "zeldplus/inc/zelerrors.h"

namespace {

using zelsvm::SvmContext;
using zelsvm::SvmParameters;
using zeltest::Samples;
using zeltest::SolvedProblem;
using zeltest::train;
using zeltest::Training;

Samples samplesFor(int svmType, std::uint64_t rows, unsigned seed) {
  return svmType < 3 ? zeltest::classSamples(rows, 4, {-1, 1}, seed)
                     : zeltest::targetSamples(rows, 4, seed);
}

void expectSameBits(const SolvedProblem& a, const SolvedProblem& b) {
  EXPECT_EQ(a.alpha, b.alpha);
  EXPECT_EQ(a.solution.rho, b.solution.rho);
  EXPECT_EQ(a.solution.obj, b.solution.obj);
  EXPECT_EQ(a.solution.r, b.solution.r);
}

void expectSameObjective(const SolvedProblem& a, const SolvedProblem& b) {
  EXPECT_NEAR(a.solution.obj, b.solution.obj, 1e-9 * std::abs(a.solution.obj));
}

class SolverInvariance : public testing::TestWithParam<int> {
 protected:
  // A nu below what these classes' overlap allows would leave the objective flat.
  SvmParameters parameters{.svmType = GetParam(), .gamma = 0.7, .nu = 0.8, .eps = 1e-8};
};

TEST_P(SolverInvariance, CacheSize) {
  const Samples samples = samplesFor(GetParam(), 130, 1);
  const Training training = train(samples, parameters);
  EXPECT_EQ(training.text.find('*'), std::string::npos);  // too small to shrink
  const SolvedProblem& cached = training.only();
  parameters.cacheSize = 0;
  const SolvedProblem evicted = train(samples, parameters).only();
  // Rows are recomputed to the bit; sums over blocks of another size are not the same sums.
  if (GetParam() == 0 || GetParam() == 3)
    expectSameBits(evicted, cached);
  else
    expectSameObjective(evicted, cached);
}

// Guesses rows only as it is told.
template <typename Solver>
class GuessingSolver : public zeltest::RecordingSolver<Solver> {
 public:
  GuessingSolver(const SvmContext<double>& context, bool guesses)
      : zeltest::RecordingSolver<Solver>(context) {
    if (!guesses) this->kernel.setForecast(nullptr);
  }
  [[nodiscard]] std::uint64_t usedGuesses() const { return this->kernel.usedGuesses(); }
};

template <typename Trainer, typename Solver>
void compareGuesses(const SvmParameters& parameters, const Samples& samples) {
  SolvedProblem problems[2];
  std::uint64_t used[2];
  for (const bool guesses : {false, true}) {
    SvmContext<double> context(parameters, zelsvm::ParameterChecks::training);
    const zeltest::CapturedOutput output;
    GuessingSolver<Solver> solver(context, guesses);
    Trainer trainer(context, solver);
    zeltest::DataSet set(samples, context);
    zelsvm::GenericModel<double> model;
    static_cast<zelsvm::AbstractTrainer<double>&>(trainer).train(model, set.data());
    problems[guesses] = solver.problems.at(0);
    used[guesses] = solver.usedGuesses();
  }
  expectSameBits(problems[1], problems[0]);
  EXPECT_EQ(used[0], 0);
  EXPECT_GT(used[1], 0);
}

// More than the last-level cache is taken to hold: rows are computed with guessed ones.
TEST(SolverGuesses, LeaveTheBitsAlone) {
  const SvmParameters parameters{
      .C = 10, .nu = 0.3, .maxIterations = 400, .cacheSize = 0, .sparse = false};
  const auto ofType = [&](int type) {
    SvmParameters typed = parameters;
    typed.svmType = type;
    return typed;
  };
  const Samples classes = zeltest::classSamples(240, 4600, {-1, 1}, 7);
  const Samples targets = zeltest::targetSamples(240, 4600, 7);
  compareGuesses<zelsvm::CoreSvmClassifier<double>, zelsvm::SmoCoreSolver<double>>(ofType(0),
                                                                                   classes);
  compareGuesses<zelsvm::NuSvmClassifier<double>, zelsvm::SmoNuSolver<double>>(ofType(1), classes);
  compareGuesses<zelsvm::CoreSvmRegressor<double>, zelsvm::SmoCoreSolver<double>>(ofType(3),
                                                                                  targets);
}

TEST_P(SolverInvariance, SparseOrDense) {
  const Samples samples = samplesFor(GetParam(), 90, 2);
  const SolvedProblem sparse = train(samples, parameters).only();
  parameters.sparse = false;
  expectSameObjective(train(samples, parameters).only(), sparse);
}

TEST_P(SolverInvariance, Shrinking) {
  parameters.eps = 1e-6;
  const Samples samples = samplesFor(GetParam(), GetParam() < 3 ? 4200 : 2100, 3);
  const Training shrunk = train(samples, parameters);
  parameters.shrinking = false;
  const Training whole = train(samples, parameters);
  EXPECT_NE(shrunk.text.find('*'), std::string::npos);
  EXPECT_EQ(whole.text.find('*'), std::string::npos);
  EXPECT_NE(shrunk.text.find("Finished"), std::string::npos);
  expectSameObjective(shrunk.only(), whole.only());
}

INSTANTIATE_TEST_SUITE_P(Formulations, SolverInvariance, testing::Range(0, 5));

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
    const double bound = y > 0 ? problem.Cp : problem.Cn;
    if (y > 0 ? problem.alpha[t] < bound : problem.alpha[t] > 0) up = std::max(up, v);
    if (y > 0 ? problem.alpha[t] > 0 : problem.alpha[t] < bound) low = std::min(low, v);
  }
  return up - low;
}

// Large enough for several chunks in every sweep and row, with few support vectors.
TEST(SolverThreads, GiveTheSameBits) {
  for (const auto& [svmType, rows, sparse] :
       {std::tuple{0, 17'000, true}, {3, 8500, true}, {4, 8500, false}}) {
    const SvmParameters parameters{.svmType = svmType,
                                   .kernelType = 0,
                                   .C = 0.1,
                                   .p = 0.4,
                                   .nu = 0.05,
                                   .eps = 0.05,
                                   .sparse = sparse};
    Samples samples = samplesFor(svmType, static_cast<std::uint64_t>(rows), 5);
    if (svmType == 0)
      for (std::uint64_t i = 0; i < samples.rows(); ++i)
        samples.labels[i] = samples.row(i)[0] + 0.1 * samples.row(i)[1] > 0.3 ? 1 : -1;
    SolvedProblem problems[2];
    for (const int threads : {1, 2}) {
      const zeltest::ThreadLimit limit(threads);
      problems[threads - 1] = train(samples, parameters).only();
    }
    EXPECT_GT(problems[0].solution.nSV, 100);
    expectSameBits(problems[1], problems[0]);
    for (const int sign : {1, -1})
      EXPECT_LE(largestViolation(problems[0], samples, svmType == 4 ? sign : 0), 0.05 + 1e-9);
  }
}

// Every pair of opposite samples solves this problem at once: the first of each sign do.
TEST(SolverThreads, TiesGoToTheFirstOfAllChunks) {
  Samples samples{1, {}, {}};
  for (int i = 0; i < 40'000; ++i) {
    samples.values.push_back(i % 2 == 0 ? 1 : -1);
    samples.labels.push_back(i % 2 == 0 ? 1 : -1);
  }
  const SolvedProblem problem = train(samples, {.kernelType = 0}).only();
  EXPECT_EQ(problem.alpha[0], 0.5);
  EXPECT_EQ(problem.alpha[1], 0.5);
  EXPECT_EQ(problem.solution.nSV, 2);
}

// A solver keeps buffers, but no state, from problems of other sizes and from failures.
template <typename Trainer, typename Solver>
void solveRepeatedly(int svmType) {
  SvmContext<double> context({.svmType = svmType, .cacheSize = 0},
                             zelsvm::ParameterChecks::training);
  zeltest::RecordingSolver<Solver> solver(context);
  Trainer trainer(context, solver);
  const zeltest::CapturedOutput output;
  const auto run = [&](const Samples& samples) {
    zeltest::DataSet set(samples, context);
    zelsvm::GenericModel<double> model;
    static_cast<zelsvm::AbstractTrainer<double>&>(trainer).train(model, set.data());
  };
  run(samplesFor(svmType, 60, 6));
  Samples bad = samplesFor(svmType, 60, 6);
  for (double& value : bad.values) value = NAN;
  EXPECT_THROW(run(bad), zel::AppException);
  for (const std::uint64_t rows : {700, 30, 60, 700}) run(samplesFor(svmType, rows, 6));
  expectSameBits(solver.problems[3], solver.problems[0]);
  expectSameBits(solver.problems[4], solver.problems[1]);
}

TEST(SolverReuse, LeavesNoTrace) {
  solveRepeatedly<zelsvm::CoreSvmClassifier<double>, zelsvm::SmoCoreSolver<double>>(0);
  solveRepeatedly<zelsvm::OneClassSvm<double>, zelsvm::SmoCoreSolver<double>>(2);
  solveRepeatedly<zelsvm::NuSvmRegressor<double>, zelsvm::SmoNuSolver<double>>(4);
}

}  // namespace
