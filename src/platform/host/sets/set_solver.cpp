#include "platform/host/sets/set_solver.h"

#include <algorithm>
#include <limits>

#include "rules/smo_rules.h"

namespace zelsvm {

SetSteps SetSolver::solve(const SetMatrix& matrix, const SetVariables& variables,
                          std::span<double> sums, double tolerance, std::uint64_t mostSteps) {
  load(matrix, variables, sums);
  const SetSteps steps = matrix.isSingle()
                             ? run(setSweeps<float>(), variables, tolerance, mostSteps,
                                   [&](unsigned r) { return matrix.singleRow(r); })
                             : run(setSweeps<double>(), variables, tolerance, mostSteps,
                                   [&](unsigned r) { return matrix.fullRow(r); });
  std::copy_n(arrays.sums, sums.size(), sums.begin());
  return steps;
}

void SetSolver::load(const SetMatrix& matrix, const SetVariables& variables,
                     std::span<const double> sums) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::uint64_t size = matrix.pitch();
  memory.resize(6 * size);
  double* next = memory.data();
  const auto take = [&] { return std::exchange(next, next + size); };
  arrays.size = size;
  arrays.groups = variables.groups();
  arrays.sums = take();
  arrays.diagonal = diagonal = take();
  for (unsigned g = 0; g < 2; ++g) {
    arrays.rises[g] = rises[g] = take();
    arrays.falls[g] = falls[g] = take();
    std::fill_n(rises[g], size, -infinity);
    std::fill_n(falls[g], size, infinity);
  }
  std::fill(std::copy(sums.begin(), sums.end(), arrays.sums), arrays.sums + size, 0.0);
  std::fill_n(diagonal, size, 0.0);
  for (std::uint64_t r = 0; r < matrix.size(); ++r) {
    diagonal[r] = matrix.value(r, r);
    refresh(variables, r);
  }
}

void SetSolver::refresh(const SetVariables& variables, std::uint64_t sample) {
  for (unsigned g = 0; g < variables.groups(); ++g) {
    rises[g][sample] = variables.rise(sample, g).offset;
    falls[g][sample] = variables.fall(sample, g).offset;
  }
}

template <typename K, typename RowOf>
SetSteps SetSolver::run(const SetSweeps<K>& sweeps, const SetVariables& variables, double tolerance,
                        std::uint64_t mostSteps, RowOf rowOf) {
  Step step{0, 0, 0, 0};
  for (std::uint64_t count = 0;; ++count) {
    const SetExtremes extremes =
        sweeps.findFirst(arrays, rowOf(step.i), step.stepI, rowOf(step.j), step.stepJ);
    const auto [up, low] = extremes.beta;
    if (!(up - low > tolerance)) return {count, true};
    if (count == mostSteps) return {count, false};
    const unsigned i = extremes.index;
    const unsigned j = sweeps.findSecond(arrays, extremes.group, rowOf(i), up, diagonal[i]);
    if (j == noIndex) return {count, true};
    step = move(variables, extremes.group, i, j, static_cast<double>(rowOf(i)[j]));
    if (step.stepI == 0 && step.stepJ == 0) return {count, true};
    refresh(variables, i);
    refresh(variables, j);
  }
}

SetSolver::Step SetSolver::move(const SetVariables& variables, unsigned group, unsigned i,
                                unsigned j, double k) const {
  const SampleMove rise = variables.rise(i, group);
  const SampleMove fall = variables.fall(j, group);
  const bool positiveI = variables.isPositive(rise.variable);
  const bool positiveJ = variables.isPositive(fall.variable);
  const bool sameSign = positiveI == positiveJ;
  const double gradientI = violation(positiveI, rise.offset - arrays.sums[i]);
  const double gradientJ = violation(positiveJ, fall.offset - arrays.sums[j]);
  const PairValues bounds{variables.bound(rise.variable), variables.bound(fall.variable)};
  const double delta =
      pairStep(sameSign, gradientI, gradientJ, pairCurvature(diagonal[i] + diagonal[j], k));
  // A longer step would end at the same bound and lose the pair's sum to rounding on its way.
  const double most = bounds.i + bounds.j;
  double& a = variables.multipliers[rise.variable];
  double& b = variables.multipliers[fall.variable];
  const PairValues next = clippedPair(sameSign, {a, b}, std::clamp(delta, -most, most), bounds);
  const double deltaI = next.i - a;
  const double deltaJ = next.j - b;
  a = next.i;
  b = next.j;
  return {i, j, positiveI ? deltaI : -deltaI, positiveJ ? deltaJ : -deltaJ};
}

}  // namespace zelsvm
