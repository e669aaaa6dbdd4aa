#include "platform/host/solver/host_solver.h"

#include <algorithm>
#include <vector>

#include "platform/host/rows/row_source.h"
#include "platform/host/solver/gradient_sweeps.h"
#include "rules/kernel_traits.h"
#include "rules/smo_rules.h"

namespace zelsvm {
namespace {

// A step that v does not show yet, in changes of the multipliers times their signs.
struct PendingStep {
  unsigned j;
  double stepI;
  double stepJ;
};

class HostSolver : public SolverMachine {
 public:
  HostSolver(SVM_KERNEL kernel, bool nu) : nu(nu), sweeps(nu, hasUnitDiagonal(kernel)) {}

  void begin(const SolverTask& newTask, const std::function<void()>& columnsAdded) override {
    task = newTask;
    const std::uint64_t l = task.start.size();
    alpha.resize(l);
    std::copy(task.start.begin(), task.start.end(), alpha.data());
    rows.assign(task);
    sweeps.assign(task.samples->rows(), task.signs, task.linearTerm);
    sweeps.clearStates();
    active.resize(l);
    for (unsigned t = 0; t < l; ++t) active.data()[t] = t;
    refreshStates();
    if (!task.startsAtZero) addStart(columnsAdded);
  }

  void end() override { task = {}; }

  void activate(std::span<const unsigned> ascendingVariables) override {
    active.resize(ascendingVariables.size());
    std::copy(ascendingVariables.begin(), ascendingVariables.end(), active.data());
    sweeps.clearStates();
    refreshStates();
  }

  void select(SmoSelection<double>& selection, SmoSelection<double>& second) override {
    sweeps.select(selection, second);
  }

  PairStep movePair(const SmoSelection<double>& selection,
                    const SmoSelection<double>& second) override {
    const double* const row = rows.row(sweeps.sampleOf(selection.index));
    const double* const row2 = nu ? rows.row(sweeps.sampleOf(second.index)) : row;
    const unsigned j = sweeps.selectSecond({{selection.beta.up, second.beta.up},
                                            {row, row2},
                                            {diagonal(selection.index), diagonal(second.index)},
                                            rows.diagonal()});
    if (j == noIndex) return {selection.index, noIndex, 0, 0};
    const bool other = nu && !isPositive(j);
    firstRow = other ? row2 : row;
    return move(other ? second.index : selection.index, j, firstRow[sweeps.sampleOf(j)]);
  }

  void updateGradient() override {
    const double* const secondRow = rows.row(sweeps.sampleOf(pending.j));
    sweeps.update({firstRow, secondRow, pending.stepI, pending.stepJ});
  }

  void markShrinkable(const SmoSelection<double>& selection, const SmoSelection<double>& second,
                      std::span<signed char> marks) override {
    for (unsigned q = 0; q < active.size(); ++q) {
      const unsigned t = active.data()[q];
      const SmoUpperBeta<double>& beta = nu && !isPositive(t) ? second.beta : selection.beta;
      if (isShrinkable(isPositive(t), alpha.data()[t], upperBound(t), sweeps.valueOf(t), beta.up,
                       beta.low))
        marks[t] = 1;
    }
  }

  void read(std::span<double> multipliers, std::span<double> gradient) override {
    std::copy_n(alpha.data(), multipliers.size(), multipliers.begin());
    for (unsigned t = 0; t < gradient.size(); ++t)
      gradient[t] = violation(isPositive(t), sweeps.valueOf(t));
  }

  [[nodiscard]] double cacheHitRate() const override { return rows.hitRate(); }

 private:
  [[nodiscard]] bool isPositive(unsigned t) const { return task.signs[t] > 0; }
  [[nodiscard]] double upperBound(unsigned t) const {
    const double c = isPositive(t) ? task.Cp : task.Cn;
    return task.factors.empty() ? c : c * task.factors[sweeps.sampleOf(t)];
  }
  [[nodiscard]] double diagonal(unsigned t) const {
    return rows.diagonal() == nullptr ? 1.0 : rows.diagonal()[sweeps.sampleOf(t)];
  }

  void refreshStates() {
    for (unsigned q = 0; q < active.size(); ++q) refreshState(active.data()[q]);
  }

  void refreshState(unsigned t) {
    const bool positive = isPositive(t);
    const double a = alpha.data()[t];
    const double c = upperBound(t);
    sweeps.setState(t, static_cast<SmoState>((inUpperSet(positive, a, c) ? inUpperBit : 0) |
                                             (inLowerSet(positive, a, c) ? inLowerBit : 0) |
                                             (positive ? positiveBit : 0)));
  }

  // Adds the kernel rows of all samples to v, times their multipliers.
  void addStart(const std::function<void()>& columnsAdded) {
    std::vector<double> weights(task.samples->rows(), 0.0);
    for (unsigned t = 0; t < alpha.size(); ++t)
      weights[sweeps.sampleOf(t)] += isPositive(t) ? -alpha.data()[t] : alpha.data()[t];
    rows.addRows(weights, sweeps.values(), columnsAdded);
    // Of a regression's second half, which has been added with the first.
    for (std::uint64_t t = weights.size(); t < alpha.size(); t += rows.slotCount()) columnsAdded();
  }

  // Moves the pair's multipliers to their constrained optimum; k = K of its samples.
  PairStep move(unsigned i, unsigned j, double k) {
    const bool sameSign = isPositive(i) == isPositive(j);
    const double gradientI = violation(isPositive(i), sweeps.valueOf(i));
    const double gradientJ = violation(isPositive(j), sweeps.valueOf(j));
    const double delta =
        pairStep(sameSign, gradientI, gradientJ, pairCurvature(diagonal(i) + diagonal(j), k));
    double& a = alpha.data()[i];
    double& b = alpha.data()[j];
    const PairValues next = clippedPair(sameSign, {a, b}, delta, {upperBound(i), upperBound(j)});
    const PairStep step{i, j, next.i - a, next.j - b};
    a = next.i;
    b = next.j;
    pending = {j, isPositive(i) ? step.deltaI : -step.deltaI,
               isPositive(j) ? step.deltaJ : -step.deltaJ};
    refreshState(i);
    refreshState(j);
    return step;
  }

  bool nu;
  SolverTask task{};
  HostVector<double> alpha;
  HostVector<unsigned> active;
  RowSource rows;
  GradientSweeps sweeps;
  const double* firstRow = nullptr;  // of the pair that moved last
  PendingStep pending{};
};

}  // namespace

std::unique_ptr<SolverMachine> makeHostSolver(SVM_KERNEL kernel, bool twoGroups) {
  return std::make_unique<HostSolver>(kernel, twoGroups);
}

}  // namespace zelsvm
