#include "solver/smo_solver.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "base/errors.h"
#include "base/output/console.h"
#include "data/kernel_values.h"
#include "rules/smo_rules.h"
#include "solver/solver_choice.h"
#include "threads/clock.h"

namespace zelsvm {
namespace {

constexpr std::uint64_t batchLimit = 1000;
// Smaller problems are not worth shrinking.
constexpr std::uint64_t shrinkingThreshold = 4096;
// Iterations between two looks at the sink.
constexpr std::uint64_t reportStride = 64;
constexpr const char* overflowText = "Failed to optimize the svm.";

template <typename T>
std::span<const T> spanOf(const HostVector<T>& vector) {
  return {vector.data(), vector.size()};
}

template <typename T>
std::span<T> spanOf(HostVector<T>& vector) {
  return {vector.data(), vector.size()};
}

template <typename T>
T sumOfBounds(const SolverProblem<T>& problem) {
  T sum = 0;
  for (std::uint64_t k = 0; k < problem.signs.size(); ++k) sum += problem.bound(k);
  return sum;
}

}  // namespace

template <typename T>
SmoBaseSolver<T>::SmoBaseSolver(const SvmContext<T>& context, bool nu)
    : context(&context),
      nu(nu),
      machine(context.machine.makeSolver(context.kernelType, nu)),
      setMachine(context.machine.makeSetMachine()) {
  if (!(context.C > 0)) throw zel::AppException("Invalid regularization/weight constants.");
}

template <typename T>
SmoSolution SmoBaseSolver<T>::solve(SolverProblem<T>& problem,
                                    const zelmag::AbstractMatrix<T>& samples) {
  if (problem.signs.size() >= noIndex)
    throw zel::RuntimeException("There are too many variables to optimize.");
  const std::int64_t start = zel::monotonicNanoseconds();
  variableCount = problem.signs.size();
  gradient.resize(variableCount);
  Progress progress;
  if (!goesBySets(samples) || !solveBySets(progress, problem, samples))
    solveByPairs(progress, problem, samples);
  zel::printMessage("\n%s optimization in %lu iterations\n\n\n",
                    progress.converged ? "Finished" : "Failed to reach",
                    progress.iterations & 0xFFFFFFFFu);
  if (!std::all_of(gradient.data(), gradient.data() + variableCount,
                   [](T g) { return std::isfinite(g); }))
    throw zel::AppException(overflowText);
  SmoSolution result = collectSolution(problem);
  result.iterations = progress.iterations;
  result.gap = gapOf(problem);
  result.isConverged = progress.converged;
  result.seconds = static_cast<double>(zel::monotonicNanoseconds() - start) * 1e-9;
  return result;
}

template <typename T>
bool SmoBaseSolver<T>::goesBySets(const zelmag::AbstractMatrix<T>& samples) const {
  // A set asks for rows that others before it asked for. Who computes them for us is to do so once.
  const bool readsFreely = samples.kernelValues() == nullptr || samples.kernelValues()->isShared();
  return setMachine && readsFreely && worksBySets(context->svmType, samples.rows());
}

// False where the two-variable method is to go on from what the problem holds then.
template <typename T>
bool SmoBaseSolver<T>::solveBySets(Progress& progress, SolverProblem<T>& problem,
                                   const zelmag::AbstractMatrix<T>& samples) {
  const SetVariables variables{.samples = samples.rows(),
                               .signs = spanOf(std::as_const(problem.signs)),
                               .linearTerm = spanOf(std::as_const(problem.p)),
                               .multipliers = spanOf(problem.alpha),
                               .Cp = problem.Cp,
                               .Cn = problem.Cn,
                               .twoGroups = nu,
                               .factors = problem.factors};
  WorkingSets sets(*context, *setMachine);
  const SetEnding ending =
      sets.solve(variables, samples, problem.startsNear,
                 [this](const GroupState& first, const GroupState& second) {
                   const auto selected = [](const GroupState& state) {
                     return SmoSelection<T>{0, {state.up, state.low}};
                   };
                   if (!std::isfinite(violationOf(selected(first), selected(second))))
                     throw zel::AppException(overflowText);
                 });
  progress.iterations = sets.iterations();
  progress.converged = ending == SetEnding::converged;
  problem.startsAtZero = problem.startsAtZero && progress.iterations == 0;
  sets.readGradient(spanOf(gradient));
  setMachine->end();
  return ending != SetEnding::left;
}

template <typename T>
void SmoBaseSolver<T>::solveByPairs(Progress& progress, SolverProblem<T>& problem,
                                    const zelmag::AbstractMatrix<T>& samples) {
  begin(problem, samples);
  progress.active = variableCount;
  progress.shrinking = context->shrinking && variableCount > shrinkingThreshold;
  iterate(progress, problem);
  readBack(problem);
  machine->end();
}

template <typename T>
void SmoBaseSolver<T>::begin(const SolverProblem<T>& problem,
                             const zelmag::AbstractMatrix<T>& samples) {
  marks.resize(variableCount);
  active.resize(variableCount);
  machine->begin({.samples = &samples,
                  .kernel = context->kernelSettings(samples.features().count()),
                  .signs = spanOf(problem.signs),
                  .start = spanOf(problem.alpha),
                  .startsAtZero = problem.startsAtZero,
                  .linearTerm = spanOf(problem.p),
                  .Cp = problem.Cp,
                  .Cn = problem.Cn,
                  .cacheMegabytes = context->cacheSize,
                  .cacheSharers = context->cacheSharers,
                  .factors = problem.factors},
                 [] { zel::printMessage("."); });
  marks.fill(0);
}

template <typename T>
void SmoBaseSolver<T>::iterate(Progress& progress, SolverProblem<T>& problem) {
  StallWatch watch(variableCount, sumOfBounds(problem));
  while (!progress.converged && !progress.stuck) {
    progress.iterations += runBatch(progress);
    watch.see(progress.gap, progress.active == variableCount);
    if (!progress.converged && watch.isDue(progress.iterations))
      progress.stuck = hasStalled(watch, progress.iterations, problem);
    if (zel::isVerbose()) zel::printMessage(".");
    if (!progress.converged && progress.shrinking) shrink(progress);
    if (progress.iterations >= context->maxIterations) break;
  }
}

template <typename T>
std::uint64_t SmoBaseSolver<T>::runBatch(Progress& progress) {
  const std::uint64_t batch =
      std::min({variableCount, batchLimit, context->maxIterations - progress.iterations});
  bool restored = false;
  std::uint64_t k = 0;
  while (k < batch && !progress.stuck && !restored) {
    progress.gap = select();
    if (progress.gap <= context->eps && progress.shrinking) {
      zel::printMessage("*");
      activateAll(progress);
      progress.gap = select();
      restored = true;
    }
    if (!std::isfinite(progress.gap)) throw zel::AppException(overflowText);
    if (k % reportStride == 0) lookOut(progress, progress.iterations + k);
    ++k;
    if (progress.gap <= context->eps) {
      progress.converged = true;
      break;
    }
    step(progress);
  }
  return k;
}

// The largest violation among the active variables.
template <typename T>
T SmoBaseSolver<T>::select() {
  machine->select(selection, second);
  return violationOf(selection, second);
}

template <typename T>
void SmoBaseSolver<T>::step(Progress& progress) {
  const PairStep next = machine->movePair(selection, second);
  // Numbers that are not comparable leave no candidate.
  if (next.j == noIndex) throw zel::AppException(overflowText);
  // A step that changed nothing is followed by the same one.
  progress.stuck = next.i == progress.step.i && next.j == progress.step.j && next.deltaI == 0 &&
                   next.deltaJ == 0;
  progress.step = next;
  machine->updateGradient();
}

// Tells the sink how far the solve is, or ends it, as the sink wishes.
template <typename T>
void SmoBaseSolver<T>::lookOut(const Progress& progress, std::uint64_t iterations) {
  if (zel::isStopped()) throw zel::Stopped{};
  if (!zel::wantsProgress()) return;
  machine->read(spanOf(gradient), {});  // the gradient is read again when it is needed
  const auto positive = std::count_if(gradient.data(), gradient.data() + variableCount,
                                      [](T multiplier) { return multiplier > 0; });
  zel::showProgress({iterations, progress.gap, context->eps, machine->cacheHitRate(),
                     static_cast<std::uint64_t>(positive)});
}

template <typename T>
bool SmoBaseSolver<T>::hasStalled(StallWatch& watch, std::uint64_t iterations,
                                  SolverProblem<T>& problem) {
  readBack(problem);
  T objective = 0;
  T magnitude = 0;
  for (std::uint64_t k = 0; k < variableCount; ++k) {
    const T term = (gradient.data()[k] + problem.p.data()[k]) * problem.alpha.data()[k] / 2;
    objective += term;
    magnitude += std::abs(term);
  }
  return watch.hasStalled(iterations, objective, magnitude);
}

template <typename T>
void SmoBaseSolver<T>::readBack(SolverProblem<T>& problem) {
  machine->read(spanOf(problem.alpha), spanOf(gradient));
}

template <typename T>
void SmoBaseSolver<T>::activateAll(Progress& progress) {
  marks.fill(0);
  for (unsigned k = 0; k < variableCount; ++k) active.data()[k] = k;
  progress.active = variableCount;
  machine->activate({active.data(), variableCount});
}

template <typename T>
void SmoBaseSolver<T>::shrink(Progress& progress) {
  if (!progress.unshrunk && progress.gap <= 10 * context->eps) {
    if (zel::isVerbose()) zel::printMessage("*");
    activateAll(progress);
    progress.unshrunk = true;
  }
  select();
  machine->markShrinkable(selection, second, spanOf(marks));
  progress.active = 0;
  for (unsigned k = 0; k < variableCount; ++k)
    if (marks.data()[k] == 0) active.data()[progress.active++] = k;
  if (progress.active == 0) return activateAll(progress);
  machine->activate({active.data(), progress.active});
}

// The largest violation of a group at the gradient last read.
template <typename T>
T SmoBaseSolver<T>::gapOf(const SolverProblem<T>& problem) const {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  SmoUpperBeta<T> groups[2] = {{-infinity, infinity}, {-infinity, infinity}};
  for (std::uint64_t k = 0; k < variableCount; ++k) {
    const bool isPositive = problem.signs.data()[k] > 0;
    const T c = problem.bound(k);
    const T a = problem.alpha.data()[k];
    const T v = violation(isPositive, gradient.data()[k]);
    SmoUpperBeta<T>& group = groups[nu && !isPositive ? 1 : 0];
    if (inUpperSet(isPositive, a, c)) group.up = std::max(group.up, v);
    if (inLowerSet(isPositive, a, c)) group.low = std::min(group.low, v);
  }
  return std::max(groups[0].up - groups[0].low, groups[1].up - groups[1].low);
}

template <typename T>
SmoSolution SmoBaseSolver<T>::collectSolution(const SolverProblem<T>& problem) const {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  GradientBounds<T> positive{.minLower = infinity, .maxUpper = -infinity};
  GradientBounds<T> negative = positive;
  SmoSolution result;
  T objective = 0;
  for (std::uint64_t k = 0; k < variableCount; ++k) {
    const bool isPositive = problem.signs.data()[k] > 0;
    const T c = problem.bound(k);
    const T a = problem.alpha.data()[k];
    const T g = gradient.data()[k];
    if (std::abs(a) > 0) {
      ++result.nSV;
      result.alphaSum += a;
      if (std::abs(a) >= c) ++result.nBSV;
    }
    GradientBounds<T>& bounds = isPositive ? positive : negative;
    if (a >= c) {
      bounds.maxUpper = std::max(bounds.maxUpper, g);
    } else if (a <= 0) {
      bounds.minLower = std::min(bounds.minLower, g);
    } else {
      ++bounds.count;
      bounds.sum += g;
    }
    objective += (g + problem.p.data()[k]) * a;
  }
  result.obj = objective / 2;
  result.rho = calculateRho(result.r, positive, negative);
  return result;
}

template <typename T>
T SmoBaseSolver<T>::calculateRho(T& /*r*/, const GradientBounds<T>& positive,
                                 const GradientBounds<T>& negative) const {
  const std::uint64_t count = positive.count + negative.count;
  if (count > 0) return (positive.sum - negative.sum) / static_cast<T>(count);
  const T upper = std::fmin(positive.minLower, -negative.maxUpper);
  const T lower = std::fmax(positive.maxUpper, -negative.minLower);
  return (upper + lower) / 2;
}

template class SmoBaseSolver<double>;

}  // namespace zelsvm
