#include "training/regressor.h"

#include <algorithm>
#include <utility>

#include "base/output/console.h"
#include "training/model_extraction.h"

namespace zelsvm {
namespace {

// Signs +1 and -1, linear terms epsilon - z and epsilon + z.
template <typename T>
SolverProblem<T> regressionProblem(const SvmData<T>& data, T C, T epsilon) {
  const std::uint64_t n = data.sampleCount();
  SolverProblem<T> problem(2 * n, C, data.weights());
  for (std::uint64_t i = 0; i < n; ++i) {
    const T z = data.label(i);
    problem.p.set(i, epsilon - z);
    problem.p.set(i + n, epsilon + z);
    problem.signs.set(i, 1);
    problem.signs.set(i + n, -1);
  }
  return problem;
}

// Leaves each sample's difference of multipliers in the first half.
template <typename T>
void subtractHalves(HostVector<T>& alpha) {
  const std::uint64_t n = alpha.size() / 2;
  for (std::uint64_t i = 0; i < n; ++i) alpha.set(i, alpha[i] - alpha[i + n]);
}

}  // namespace

template <typename T>
void CoreSvmRegressor<T>::train(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  SolverProblem<T> problem = regressionProblem(data, this->context->C, this->context->p);
  problem.startsAtZero = true;
  const SmoSolution solution = this->solve(data, problem);
  if (zel::isVerbose()) {
    zel::printMessage("nu = %g\n", solution.alphaSum / (data.totalWeight() * this->context->C));
    printSolution(solution);
  }
  subtractHalves(problem.alpha);
  extractRegression(model, data, {std::move(problem), solution});
}

template <typename T>
void NuSvmRegressor<T>::train(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  const T C = this->context->C;
  SolverProblem<T> problem = regressionProblem<T>(data, C, 0);
  const std::uint64_t n = data.sampleCount();
  T budget = C * this->context->nu * data.totalWeight() * 0.5;
  for (std::uint64_t i = 0; i < n; ++i) {
    const T a = std::min(budget, problem.bound(i));
    problem.alpha.set(i, a);
    problem.alpha.set(i + n, a);
    budget -= a;
  }
  const SmoSolution solution = this->solve(data, problem);
  if (zel::isVerbose()) {
    zel::printMessage("epsilon = %g\n", -solution.r);
    printSolution(solution);
  }
  subtractHalves(problem.alpha);
  extractRegression(model, data, {std::move(problem), solution});
}

template class CoreSvmRegressor<double>;
template class NuSvmRegressor<double>;

}  // namespace zelsvm
