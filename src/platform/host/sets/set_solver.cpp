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
  unsigned i = 0;
  unsigned j = 0;
  SetStep step{0, 0};
  for (std::uint64_t count = 0;; ++count) {
    const SetExtremes extremes = sweeps.findFirst(arrays, rowOf(i), step.i, rowOf(j), step.j);
    const auto [up, low] = extremes.beta;
    if (!(up - low > tolerance)) return {count, true};
    if (count == mostSteps) return {count, false};
    i = extremes.index;
    j = sweeps.findSecond(arrays, extremes.group, rowOf(i), up, diagonal[i]);
    if (j == noIndex) return {count, true};
    step = move(variables, extremes.group, i, j, static_cast<double>(rowOf(i)[j]));
    if (step.i == 0 && step.j == 0) return {count, true};
    refresh(variables, i);
    refresh(variables, j);
  }
}

SetStep SetSolver::move(const SetVariables& variables, unsigned group, unsigned i, unsigned j,
                        double k) const {
  return variables.move(variables.rise(i, group), variables.fall(j, group),
                        {arrays.sums[i], arrays.sums[j]},
                        pairCurvature(diagonal[i] + diagonal[j], k));
}

}  // namespace zelsvm
