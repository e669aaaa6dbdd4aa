// Problems that are solved a working set at a time.
#include "solver/working_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "base/output/console.h"
#include "support/pair_machine.h"
#include "support/platform_settings.h"
#include "support/solved_problem.h"
#include "text_match.h"

namespace {

using zelsvm::SvmParameters;
using zeltest::Samples;
using zeltest::SolvedProblem;
using zeltest::train;
using zeltest::Training;

// As many as are solved so whatever the formulation, with some more than fill vectors and panels.
constexpr std::uint64_t usualSize = 1553;

bool isRegression(const SvmParameters& parameters) { return parameters.svmType > 2; }
bool hasTwoGroups(const SvmParameters& parameters) {
  return parameters.svmType == 1 || parameters.svmType == 4;
}

Samples samplesFor(const SvmParameters& parameters, std::uint64_t rows,
                   std::uint64_t features = 3) {
  if (isRegression(parameters)) return zeltest::targetSamples(rows, features, 11);
  // Classes that a function tells apart but for every tenth: few enough errors for the nu of these
  // tests to have a margin.
  Samples samples = zeltest::classSamples(rows, features, {-1, 1}, 11);
  for (std::uint64_t s = 0; s < rows; ++s) {
    const double* const x = samples.row(s);
    samples.labels[s] = (x[0] + x[1] - x[2] > 0.2) == (s % 10 != 0) ? 1 : -1;
  }
  return samples;
}

// Violations of optimality by exact kernel values, each sum in ascending order of the samples.
std::vector<double> violationsOf(const SolvedProblem& problem, const Samples& samples,
                                 const SvmParameters& parameters) {
  const zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                           zeltest::testedMachine());
  const std::uint64_t n = samples.rows();
  std::vector<double> weights(n);
  for (std::size_t k = 0; k < problem.y.size(); ++k)
    weights[k % n] += problem.y[k] * problem.alpha[k];
  std::vector<double> sums(n);
  for (std::uint64_t j = 0; j < n; ++j)
    if (weights[j] != 0)
      for (std::uint64_t s = 0; s < n; ++s)
        sums[s] += weights[j] *
                   zeltest::kernelValue(context, samples.row(j), samples.row(s), samples.cols);
  std::vector<double> violations;
  for (std::size_t k = 0; k < problem.y.size(); ++k)
    violations.push_back(-problem.y[k] * problem.p[k] - sums[k % n]);
  return violations;
}

// Within the bounds, with the sums that the start has, and no group's gap above the tolerance.
void expectOptimal(const SolvedProblem& problem, const Samples& samples,
                   const SvmParameters& parameters) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> violations = violationsOf(problem, samples, parameters);
  for (const int sign : {1, -1}) {
    double up = -infinity;
    double low = infinity;
    double balance = 0;
    double total = 0;
    for (std::size_t k = 0; k < problem.y.size(); ++k) {
      const int y = problem.y[k];
      if (hasTwoGroups(parameters) && y != sign) continue;
      const double bound = problem.bounds[k];
      const double a = problem.alpha[k];
      ASSERT_TRUE(a >= 0 && a <= bound);
      balance += y * (a - problem.start[k]);
      total += a;
      if (y > 0 ? a < bound : a > 0) up = std::max(up, violations[k]);
      if (y > 0 ? a > 0 : a < bound) low = std::min(low, violations[k]);
    }
    EXPECT_NEAR(balance, 0, 1e-10 * (1 + total));
    EXPECT_LE(up - low, parameters.eps + 1e-9 * (1 + total));
  }
}

class WorkingSets : public testing::TestWithParam<std::tuple<int, int>> {
 protected:
  SvmParameters parameters{.svmType = std::get<0>(GetParam()),
                           .kernelType = std::get<1>(GetParam()),
                           .gamma = 0.4,
                           .coef0 = 0.5,
                           .C = 3,
                           .nu = 0.85};
};

TEST_P(WorkingSets, EndWhereNothingViolatesOptimality) {
  for (const std::uint64_t rows : {usualSize, 2 * usualSize}) {
    Samples samples = samplesFor(parameters, rows);
    for (std::uint64_t s = 0; rows > usualSize && s < rows; ++s)
      samples.weights.push_back(0.3 * static_cast<double>(1 + s % 7));
    const Training training = train(samples, parameters);
    EXPECT_NE(training.text.find("Finished"), std::string::npos);
    expectOptimal(training.only(), samples, parameters);
  }
}

TEST_P(WorkingSets, ReachTheObjectiveOfPairs) {
  if (parameters.kernelType == 3) return;  // it has several stationary points
  parameters.eps = 1e-6;
  const Samples samples = samplesFor(parameters, usualSize);
  const auto sets = train(samples, parameters).only().solution;
  const auto pairs = train(samples, parameters, zeltest::pairMachine()).only().solution;
  // A gap of eps leaves eps to gain per unit of a multiplier.
  EXPECT_NEAR(sets.obj, pairs.obj, parameters.eps * (sets.alphaSum + pairs.alphaSum));
  EXPECT_NEAR(sets.rho, pairs.rho, 1e-4 * (1 + std::abs(pairs.rho)));
  EXPECT_NEAR(sets.r, pairs.r, 1e-4 * (1 + std::abs(pairs.r)));
}

// And with any instruction set but the first, which has no fused multiply-adds.
TEST_P(WorkingSets, GiveTheSameBitsWithAnyThreadsAndCache) {
  // So many features that rows are worth keeping.
  const Samples samples = samplesFor(parameters, usualSize, 90);
  parameters.gamma = 0.4 / 30;
  const SolvedProblem first = train(samples, parameters).only();
  const auto compare = [&] {
    const SolvedProblem again = train(samples, parameters).only();
    EXPECT_EQ(again.alpha, first.alpha);
    EXPECT_EQ(again.solution.obj, first.solution.obj);
    EXPECT_EQ(again.solution.rho, first.solution.rho);
  };
  for (const std::uint64_t megabytes : {0, 2, 5}) {
    parameters.cacheSize = megabytes;
    compare();
  }
  for (const zeltest::PlatformSetting& setting : zeltest::platformSettings())
    if (setting.equalBits || setting.name != "instruction set 0") setting.apply(compare);
}

INSTANTIATE_TEST_SUITE_P(Formulations, WorkingSets,
                         testing::Combine(testing::Range(0, 5), testing::Range(0, 4)));

// Samples where many pairs have no curvature, some features say nothing, or one class is tiny.
TEST(WorkingSetEnds, OnSingularProblems) {
  for (const int type : {0, 1, 2, 3, 4})
    for (const bool tiny : {false, true}) {
      SvmParameters parameters{.svmType = type, .C = 10, .nu = tiny ? 0.002 : 0.5};
      Samples samples = samplesFor(parameters, usualSize);
      for (std::uint64_t s = 0; s < usualSize; ++s) {
        samples.values[3 * s] = 2;
        if (!tiny)
          std::copy_n(samples.row(s % 40), 3,
                      samples.values.begin() + 3 * static_cast<std::ptrdiff_t>(s));
        if (tiny && type < 2) samples.labels[s] = s % 700 == 3 ? 1 : -1;
      }
      SCOPED_TRACE(type);
      expectOptimal(train(samples, parameters).only(), samples, parameters);
    }
}

// Features so far from 0 that squared norms in single precision say little or nothing of distances.
TEST(WorkingSetEnds, WhereSinglePrecisionIsCoarse) {
  for (const int type : {0, 1, 2, 3})
    for (const double distance : {5, 12, 1000}) {
      const SvmParameters parameters{.svmType = type, .gamma = 0.4, .C = 3};
      Samples samples = samplesFor(parameters, usualSize);
      for (double& value : samples.values) value += distance;
      SCOPED_TRACE(testing::Message() << type << ", " << distance);
      expectOptimal(train(samples, parameters).only(), samples, parameters);
    }
}

TEST(WorkingSetEnds, AtAnyCost) {
  for (const int type : {0, 3})
    for (const double cost : {1e-6, 1e6}) {
      // So narrow a kernel that the largest cost bounds no multiplier.
      const SvmParameters parameters{.svmType = type, .gamma = 4, .C = cost};
      const Samples samples = type == 0 ? zeltest::classSamples(usualSize, 8, {-1, 1}, 5)
                                        : zeltest::targetSamples(usualSize, 8, 5);
      SCOPED_TRACE(cost);
      const SolvedProblem problem = train(samples, parameters).only();
      expectOptimal(problem, samples, parameters);
      EXPECT_EQ(problem.solution.nBSV > 0, cost < 1);
    }
}

TEST(WorkingSetLimits, IterationsEndExactlyThere) {
  const Samples samples = zeltest::classSamples(usualSize, 3, {0, 1}, 1);
  for (const std::uint64_t limit : {1, 999, 1000, 2345}) {
    const std::string text = train(samples, {.C = 100, .eps = 1e-9, .maxIterations = limit}).text;
    EXPECT_EQ(text.substr(0, text.find("nu")), std::string(limit / 1000, '.') +
                                                   "\nFailed to reach optimization in " +
                                                   std::to_string(limit) + " iterations\n\n\n");
  }
}

class WatchingSink : public zel::MessageSink {
 public:
  explicit WatchingSink(std::uint64_t stopAt) : MessageSink(true), stopAt(stopAt) {}
  void write(std::string_view) override {}
  bool wantsProgress() override { return true; }
  void showProgress(const zel::SolveProgress& progress) override {
    EXPECT_TRUE(progress.iterations >= seen && progress.kernelValues >= made);
    seen = progress.iterations;
    made = progress.kernelValues;
    if (seen >= stopAt) throw std::string("enough");
  }

  std::uint64_t stopAt;
  std::uint64_t seen = 0;
  double made = 0;
};

TEST(WorkingSetLimits, TheSinkMayEndThem) {
  const Samples samples = zeltest::classSamples(usualSize, 3, {0, 1}, 1);
  const SvmParameters parameters{.C = 100, .eps = 1e-6};
  const zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                           zeltest::testedMachine());
  zeltest::DataSet set(samples, context);
  zelsvm::SmoCoreSolver<double> solver(context);
  zelsvm::CoreSvmClassifier<double> trainer(context, solver);
  const auto trainWith = [&](zel::MessageSink& sink) {
    const zel::SinkScope scope(sink);
    zelsvm::GenericModel<double> model;
    static_cast<zelsvm::AbstractTrainer<double>&>(trainer).train(model, set.data());
    return model.rho()[0];
  };
  constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();
  WatchingSink all(never);
  const double rho = trainWith(all);
  EXPECT_GE(all.made, static_cast<double>(usualSize));
  WatchingSink some(3000);
  EXPECT_THROW(trainWith(some), std::string);
  EXPECT_LT(some.seen, 4001u);
  WatchingSink again(never);
  EXPECT_EQ(trainWith(again), rho);  // nothing is left of what was interrupted
}

}  // namespace
