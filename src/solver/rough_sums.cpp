#include "solver/rough_sums.h"

#include <algorithm>
#include <cmath>

namespace zelsvm {
namespace {

// One in so many samples is looked at after each step, within these bounds.
constexpr std::uint64_t probeShare = 100;
constexpr std::uint64_t fewestProbes = 16;
constexpr std::uint64_t mostProbes = 128;
// Tolerances by which a step may be wrong: what it leaves is mended at the end.
constexpr double bearableTolerances = 4;
// Errors of the samples that are looked at stand for those of all others.
constexpr double safety = 4;
// Exact sums of more samples cost more than exact rows save.
constexpr std::uint64_t nearShare = 4;
constexpr unsigned mostRounds = 10;

}  // namespace

void RoughSums::begin(std::uint64_t samples, double tolerance) {
  bearable = bearableTolerances * tolerance;
  margin = tolerance;
  rounds = 0;
  used = false;
  values = 0;
  const std::uint64_t count = std::clamp(samples / probeShare, fewestProbes, mostProbes);
  probes.clear();
  for (std::uint64_t i = 0; i < count; ++i)
    probes.push_back(static_cast<unsigned>(i * samples / count));
}

bool RoughSums::pays(std::uint64_t samples, std::uint64_t freeVariables) {
  return freeVariables <= samples / nearShare;
}

bool RoughSums::add(std::span<const WeightedRow> added, std::span<double> sums,
                    SetMachine& machine) {
  before.assign(sums.begin(), sums.end());
  exact.clear();
  for (const unsigned s : probes) exact.push_back(sums[s]);
  machine.addRows(added, sums);
  machine.addExactly(added, probes, exact);
  values += static_cast<double>(added.size() * probes.size());
  for (std::size_t i = 0; i < probes.size(); ++i)
    if (!(std::abs(exact[i] - sums[probes[i]]) <= bearable)) {
      std::copy(before.begin(), before.end(), sums.begin());
      return false;
    }
  used = true;
  return true;
}

bool RoughSums::makeExact(const SetVariables& variables, const Violators& violators,
                          std::span<double> sums, SetMachine& machine) {
  if (++rounds > mostRounds) return false;
  rows.clear();
  for (unsigned s = 0; s < variables.samples; ++s)
    if (const double weight = variables.weight(s); weight != 0) rows.push_back({s, false, weight});
  for (bool isEnough = false; !isEnough;) {
    violators.listNear(variables, sums, 2 * margin, near);
    if (!pays(variables.samples, near.size())) return false;
    const double worst = replaceNear(sums, machine);
    if (!std::isfinite(worst)) return false;
    isEnough = margin >= safety * worst;
    margin = std::max(margin, 2 * safety * worst);
  }
  return true;
}

// By exact ones; the largest difference.
double RoughSums::replaceNear(std::span<double> sums, SetMachine& machine) {
  exact.assign(near.size(), 0);
  machine.addExactly(rows, near, exact);
  values += static_cast<double>(rows.size() * near.size());
  double worst = 0;
  for (std::size_t i = 0; i < near.size(); ++i) {
    worst = std::max(worst, std::abs(exact[i] - sums[near[i]]));
    sums[near[i]] = exact[i];
  }
  return worst;
}

}  // namespace zelsvm
