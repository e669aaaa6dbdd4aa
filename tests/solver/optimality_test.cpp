// Every formulation with every kernel: the solution against the conditions of optimality and
// against an independent solution.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>

#include "support/quadratic_program.h"
#include "support/solved_problem.h"
#include "support/tested_machine.h"

namespace {

using zelsvm::SvmContext;
using zelsvm::SvmParameters;
using zeltest::dot;
using zeltest::QuadraticProgram;
using zeltest::Samples;
using zeltest::SolvedProblem;
using zeltest::Vector;

constexpr double rounding = 1e-9;
constexpr double infinity = std::numeric_limits<double>::infinity();

// The problem in full, with the equations that the start satisfies: one, or one per sign.
QuadraticProgram programOf(const SolvedProblem& problem, const Samples& samples,
                           const SvmContext<double>& context, bool perSign) {
  const std::size_t l = problem.y.size();
  QuadraticProgram qp{std::vector<Vector>(l, Vector(l)), problem.p, {}, {}, {}};
  for (std::size_t k = 0; k < l; ++k)
    for (std::size_t j = 0; j < l; ++j)
      qp.Q[k][j] = problem.y[k] * problem.y[j] *
                   zeltest::kernelValue(context, samples.row(k % samples.rows()),
                                        samples.row(j % samples.rows()), samples.cols);
  for (const int sign : {1, -1}) {
    Vector row;
    for (const int y : problem.y) row.push_back(!perSign ? y : y == sign ? 1 : 0);
    qp.A.push_back(row);
    qp.b.push_back(dot(row, problem.start));
    if (!perSign) break;
  }
  qp.u = problem.bounds;
  return qp;
}

// Extremes of -y G over the variables with the given sign (0: all) that may rise and fall.
struct Violation {
  double up = -infinity;
  double low = infinity;

  Violation(const SolvedProblem& problem, const Vector& gradient, const Vector& u, int sign) {
    for (std::size_t k = 0; k < u.size(); ++k) {
      const int y = problem.y[k];
      if (sign != 0 && y != sign) continue;
      const double v = -y * gradient[k];
      if (y > 0 ? problem.alpha[k] < u[k] : problem.alpha[k] > 0) up = std::max(up, v);
      if (y > 0 ? problem.alpha[k] > 0 : problem.alpha[k] < u[k]) low = std::min(low, v);
    }
  }
  void expectWithin(double eps, double offset) const {
    EXPECT_LE(up - low, eps + rounding);
    EXPECT_GE(offset, std::min(up, low) - rounding);
    EXPECT_LE(offset, std::max(up, low) + rounding);
  }
};

// Within the box and on the plane, with the counts and sums that the solver reports.
void expectFeasible(const SolvedProblem& problem, const QuadraticProgram& qp) {
  std::uint64_t vectors = 0;
  std::uint64_t bounded = 0;
  double sum = 0;
  for (std::size_t k = 0; k < qp.u.size(); ++k) {
    const double a = problem.alpha[k];
    EXPECT_GE(a, 0);
    EXPECT_LE(a, qp.u[k]);
    vectors += a > 0;
    bounded += a >= qp.u[k];
    sum += a;
  }
  for (std::size_t r = 0; r < qp.A.size(); ++r)
    EXPECT_NEAR(dot(qp.A[r], problem.alpha), qp.b[r], 1e-12 * static_cast<double>(qp.u.size()));
  EXPECT_EQ(problem.solution.nSV, vectors);
  EXPECT_EQ(problem.solution.nBSV, bounded);
  EXPECT_NEAR(problem.solution.alphaSum, sum, rounding);
  EXPECT_NEAR(problem.solution.obj, qp.objective(problem.alpha), rounding * (1 + sum));
}

// A gap of eps leaves the objective at most eps / 2 per unit of distance above the minimum.
void expectMinimal(const SolvedProblem& problem, const QuadraticProgram& qp, double eps) {
  const Vector best = zeltest::interiorPoint(qp);
  double distance = 0;
  for (std::size_t k = 0; k < best.size(); ++k) distance += std::abs(problem.alpha[k] - best[k]);
  const double minimum = qp.objective(best);
  const double found = qp.objective(problem.alpha);
  const double tolerance = rounding * (1 + std::abs(minimum));
  EXPECT_LE(found, minimum + eps / 2 * distance + tolerance);
  EXPECT_GE(found, minimum - tolerance);
}

class Optimality : public testing::TestWithParam<std::tuple<int, int>> {
 protected:
  SvmParameters parameters{.svmType = std::get<0>(GetParam()),
                           .kernelType = std::get<1>(GetParam()),
                           .gamma = 0.4,
                           .coef0 = 0.5,
                           .C = 2.5,
                           .nu = 0.4};

  [[nodiscard]] Samples samplesFor(std::uint64_t rows, unsigned seed) const {
    return zeltest::samplesFor(parameters.svmType, rows, 3, seed);
  }

  void check(const Samples& samples) const {
    const SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                     zeltest::testedMachine());
    const SolvedProblem problem = zeltest::train(samples, parameters).only();
    const bool perSign = zeltest::isNu(parameters.svmType);
    const QuadraticProgram qp = programOf(problem, samples, context, perSign);
    expectFeasible(problem, qp);
    const Vector gradient = qp.gradient(problem.alpha);
    const double rho = problem.solution.rho;
    const double r = problem.solution.r;
    if (perSign) {  // the offsets' sum and difference are the classes'
      Violation(problem, gradient, qp.u, 1).expectWithin(parameters.eps, -(r + rho));
      Violation(problem, gradient, qp.u, -1).expectWithin(parameters.eps, r - rho);
    } else {
      EXPECT_EQ(r, 0);
      Violation(problem, gradient, qp.u, 0).expectWithin(parameters.eps, -rho);
    }
    if (parameters.kernelType !=
        int{zelsvm::SVM_KERNEL_SIGMOID})  // a sigmoid problem need not be convex
      expectMinimal(problem, qp, parameters.eps);
  }
};

TEST_P(Optimality, WithinAnyTolerance) {
  for (const double eps : {0.1, 1e-3, 1e-8})
    for (const std::uint64_t rows : {6, 17, 40}) {
      SCOPED_TRACE("eps " + std::to_string(eps) + ", " + std::to_string(rows) + " samples");
      parameters.eps = eps;
      check(samplesFor(rows, static_cast<unsigned>(rows)));
    }
}

TEST_P(Optimality, WithUnequalClassesAndWeights) {
  parameters.weights = {{-1, 0.25}, {1, 2}};
  parameters.nu = 0.2;
  parameters.eps = 1e-6;
  Samples samples = samplesFor(30, 3);
  if (!zeltest::isRegression(parameters.svmType))
    for (std::uint64_t i = 0; i < 30; ++i) samples.labels[i] = i % 4 == 0 ? 1 : -1;
  check(samples);
  for (std::uint64_t i = 0; i < 30; ++i)
    samples.weights.push_back(0.3 * static_cast<double>(1 + i % 7));
  check(samples);
}

// Singular problems: the curvature of a pair of equal samples is 0.
TEST_P(Optimality, WithEverySampleTwice) {
  parameters.eps = 1e-6;
  Samples samples = samplesFor(12, 4);
  samples.values.insert(samples.values.end(), samples.values.begin(), samples.values.end());
  samples.labels.insert(samples.labels.end(), samples.labels.begin(), samples.labels.end());
  if (!zeltest::isRegression(parameters.svmType))
    for (std::uint64_t i = 12; i < 18; ++i) samples.labels[i] *= -1;  // and some contradict
  check(samples);
}

std::string nameOfCase(const testing::TestParamInfo<std::tuple<int, int>>& tested) {
  constexpr const char* types[] = {"C", "nu", "oneClass", "epsilonRegression", "nuRegression"};
  const auto& [type, kernel] = tested.param;
  return std::string(types[type]) + "_" + zelsvm::nameOf(static_cast<zelsvm::SVM_KERNEL>(kernel));
}

INSTANTIATE_TEST_SUITE_P(All, Optimality,
                         testing::Combine(testing::ValuesIn(zeltest::allTypes),
                                          testing::ValuesIn(zeltest::allKernels)),
                         nameOfCase);

}  // namespace
