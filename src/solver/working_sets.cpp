#include "solver/working_sets.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/output/console.h"
#include "solver/set_start.h"
#include "solver/solver_choice.h"

namespace zelsvm {
namespace {

// Steps to a dot, and between two looks at the sink.
constexpr std::uint64_t batchSteps = 1000;
// A set is solved to this part of the whole gap; more would be undone by the next sets.
constexpr double innerShare = 0.1;
// Steps for each of its samples after which a set has had enough.
constexpr std::uint64_t stepsPerSample = 100;
constexpr unsigned mostIdleSets = 20;
constexpr unsigned mostDistantSets = 200;

// So many steps take some milliseconds.
std::uint64_t stepsTogether(std::uint64_t samples) {
  return std::clamp<std::uint64_t>(400'000 / samples, 50, batchSteps);
}

}  // namespace

SetEnding WorkingSets::solve(const SetVariables& problem,
                             const zelmag::AbstractMatrix<double>& allSamples, bool startsNear,
                             const Check& check) {
  variables = problem;
  samples = &allSamples;
  steps = 0;
  sets = 0;
  precision = SetPrecision::single;
  lowestObjective = closestGap = std::numeric_limits<double>::infinity();
  idleSets = distantSets = 0;
  subspace.clear();
  isDrifted = isChecked = false;
  madeBefore = 0;
  // Near its end a solve needs exact rows anyway.
  begin(startsNear || !machine->addsRoughly()
            ? SetPrecision::full
            : rowPrecision(context->kernelSettings(samples->features().count()).type));
  rough.begin(variables.samples, context->eps);
  sums.assign(variables.samples, 0);
  if (!startsNear && startsFromSubset(context->svmType)) placeStart();
  addAllRows();
  for (;;) {
    violators.look(variables, sums);
    check(violators.group(0), violators.group(1));
    lookOut();
    if (violators.gap() <= context->eps) {
      if (isExact()) return SetEnding::converged;
      continue;
    }
    if (nextBatch() == 0) return SetEnding::limit;
    if (hasStalled()) return SetEnding::left;
    if (isRough && !RoughSums::pays(variables.samples, violators.freeCount())) useFullRows();
    solveSet();
    addChanges();
    watchPrecision();
    stepInSubspace();
    ++sets;
  }
}

void WorkingSets::readGradient(std::span<double> gradient) const {
  for (std::uint64_t k = 0; k < variables.count(); ++k) {
    const double sum = sums[k % variables.samples];
    gradient[k] = violation(variables.isPositive(k), variables.offset(k) - sum);
  }
}

void WorkingSets::begin(SetPrecision rowPrecision) {
  isRough = rowPrecision == SetPrecision::single;
  machine->begin({.samples = samples,
                  .kernel = context->kernelSettings(samples->features().count()),
                  .cacheMegabytes = context->cacheSize,
                  .cacheSharers = context->cacheSharers,
                  .precision = rowPrecision});
}

// Solves a part of the problem and gives each group's sum to the variables that its solution calls
// the most violating.
void WorkingSets::placeStart() {
  set.samples = startSubset(variables);
  set.take(variables);
  SetVariables inner = set.variables();
  spreadTotals(variables, inner);
  machine->chooseSet(set.samples, precision);
  std::vector<double> weights;
  for (std::size_t r = 0; r < set.samples.size(); ++r) weights.push_back(inner.weight(r));
  set.sums.assign(set.samples.size(), 0);
  machine->addSetRows(weights, set.sums);
  constexpr double roughly = 10;
  runSet(roughly * context->eps);
  rows.clear();
  for (std::size_t r = 0; r < set.samples.size(); ++r)
    if (const double weight = inner.weight(r); weight != 0)
      rows.push_back({set.samples[r], false, weight});
  addRows();
  fillLowest(variables, sums);
}

void WorkingSets::addAllRows() {
  std::fill(sums.begin(), sums.end(), 0.0);
  rows.clear();
  for (unsigned s = 0; s < variables.samples; ++s)
    if (const double weight = variables.weight(s); weight != 0) rows.push_back({s, false, weight});
  if (rows.empty()) return;
  addRows();
  zel::printMessage(".");
}

// Chooses a set and moves its multipliers; the sums follow by addChanges().
void WorkingSets::solveSet() {
  violators.choose(variables, sums, context->eps, setSize(variables.samples, violators.freeCount()),
                   sets, set.samples);
  machine->chooseSet(set.samples, precision);
  set.take(variables);
  set.sums.clear();
  for (const unsigned s : set.samples) set.sums.push_back(sums[s]);
  const bool isWhole = set.samples.size() == variables.samples;
  innerTolerance = std::max(context->eps / 2, isWhole ? 0 : innerShare * violators.gap());
  runSet(innerTolerance);
}

void WorkingSets::runSet(double tolerance) {
  const SetVariables inner = set.variables();
  std::uint64_t left = stepsPerSample * set.samples.size();
  const std::uint64_t together = stepsTogether(set.samples.size());
  for (bool isDone = false; !isDone && left > 0 && nextBatch() > 0;) {
    const SetSteps made =
        machine->solveSet(inner, set.sums, tolerance, std::min({left, nextBatch(), together}));
    isDone = made.isDone;
    left -= made.count;
    countSteps(made.count);
    lookOut();
  }
}

// Steps to the next dot or to the end.
std::uint64_t WorkingSets::nextBatch() const {
  const std::uint64_t toDot = batchSteps - steps % batchSteps;
  return std::min(toDot, context->maxIterations - steps);
}

void WorkingSets::countSteps(std::uint64_t count) {
  steps += count;
  if (count > 0 && steps % batchSteps == 0 && zel::isVerbose()) zel::printMessage(".");
}

void WorkingSets::addChanges() {
  rows.clear();
  changes.clear();
  for (std::size_t r = 0; r < set.samples.size(); ++r) {
    const unsigned s = set.samples[r];
    const double before = variables.weight(s);
    bool isFree = false;
    for (std::uint64_t k = s, t = r; k < variables.count();
         k += variables.samples, t += set.samples.size()) {
      const double change = set.multipliers[t] - variables.multipliers[k];
      if (change != 0) changes.emplace_back(k, change);
      variables.multipliers[k] = set.multipliers[t];
      isFree = isFree || variables.isFree(k);
    }
    if (const double change = variables.weight(s) - before; change != 0)
      rows.push_back({s, isFree, change});
  }
  sumsBefore = sums;
  addRows();
}

void WorkingSets::addRows() {
  const std::span<const WeightedRow> all = rows;
  const std::uint64_t batch = machine->rowsAtOnce();
  for (std::size_t first = 0; first < all.size(); first += batch) {
    const std::span<const WeightedRow> some =
        all.subspan(first, std::min<std::size_t>(batch, all.size() - first));
    if (isRough && !rough.add(some, sums, *machine)) useFullRows();
    if (!isRough) machine->addRows(some, sums);
    lookOut();
  }
}

// From now on; sums of rough rows are made anew before the end.
void WorkingSets::useFullRows() {
  madeBefore += machine->rowsMade();
  begin(SetPrecision::full);
  isDrifted = isDrifted || rough.isUsed();
}

// Single precision is too coarse where kernel values are large.
void WorkingSets::watchPrecision() {
  constexpr double bearable = 0.25;
  double worst = 0;
  for (std::size_t r = 0; r < set.samples.size(); ++r)
    worst = std::max(worst, std::abs(set.sums[r] - sums[set.samples[r]]));
  if (!(worst <= bearable * innerTolerance)) precision = SetPrecision::full;
}

void WorkingSets::stepInSubspace() {
  if (isChecked || !tiesSets(sets)) return;
  subspace.remember(variables, changes, sumsBefore, sums);
  isDrifted = subspace.move(variables, sums, *machine) || isDrifted;
}

// Makes drifted sums anew, which may open the gap again; then without further steps that drift.
bool WorkingSets::isExact() {
  if (isRough && rough.makeExact(variables, violators, sums, *machine)) {
    isChecked = true;
    idleSets = distantSets = 0;
    lowestObjective = closestGap = std::numeric_limits<double>::infinity();
    violators.look(variables, sums);
    return violators.gap() <= context->eps;
  }
  if (isRough) useFullRows();
  if (!isDrifted) return true;
  isDrifted = false;
  isChecked = true;
  addAllRows();
  return false;
}

// Kernels that are not positive definite may have sets gain nothing though the gap is open.
bool WorkingSets::hasStalled() {
  const double now = objective();
  const double rounding = std::numeric_limits<double>::epsilon() * std::abs(lowestObjective);
  const bool gains = !(lowestObjective - now <= rounding);
  lowestObjective = std::min(lowestObjective, now);
  distantSets = violators.gap() < closestGap ? 0 : distantSets + 1;
  idleSets = gains || distantSets == 0 ? 0 : idleSets + 1;
  closestGap = std::min(closestGap, violators.gap());
  return idleSets == mostIdleSets || distantSets == mostDistantSets;
}

double WorkingSets::objective() const {
  double sum = 0;
  for (std::uint64_t k = 0; k < variables.count(); ++k) {
    const double a = variables.multipliers[k];
    const double s = sums[k % variables.samples];
    sum += a * (variables.linearTerm[k] + (variables.isPositive(k) ? s : -s) / 2);
  }
  return sum;
}

// Tells the sink how far the solve is, or ends it, as the sink wishes.
void WorkingSets::lookOut() const {
  if (zel::isStopped()) throw zel::Stopped{};
  if (!zel::wantsProgress()) return;
  const auto positive = std::count_if(variables.multipliers.begin(), variables.multipliers.end(),
                                      [](double multiplier) { return multiplier > 0; });
  zel::showProgress({.iterations = steps,
                     .gap = violators.gap(),
                     .tolerance = context->eps,
                     .cacheHitRate = machine->cacheHitRate(),
                     .supportVectors = static_cast<std::uint64_t>(positive),
                     .kernelValues = static_cast<double>(madeBefore + machine->rowsMade()) *
                                         static_cast<double>(variables.samples) +
                                     rough.exactValues()});
}

}  // namespace zelsvm
