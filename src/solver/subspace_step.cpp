#include "solver/subspace_step.h"

#include <algorithm>
#include <cmath>

namespace zelsvm {
namespace {

double signOf(const SetVariables& variables, std::uint64_t k) {
  return variables.isPositive(k) ? 1 : -1;
}

// Slope of the objective along the changes.
double slope(const SetVariables& variables, const std::vector<SubspaceStep::Change>& changes,
             std::span<const double> sums) {
  double sum = 0;
  for (const auto& [k, change] : changes)
    sum += change * (signOf(variables, k) * sums[k % variables.samples] + variables.linearTerm[k]);
  return sum;
}

// The sum of signed changes times sums: of a direction's own sums its curvature.
double signedProduct(const SetVariables& variables,
                     const std::vector<SubspaceStep::Change>& changes,
                     std::span<const double> sums) {
  double sum = 0;
  for (const auto& [k, change] : changes)
    sum += change * signOf(variables, k) * sums[k % variables.samples];
  return sum;
}

}  // namespace

void SubspaceStep::remember(const SetVariables& variables, std::vector<Change> changes,
                            std::span<const double> sumsBefore, std::span<const double> sums) {
  Direction direction{std::move(changes), std::vector<double>(sums.size())};
  for (std::size_t s = 0; s < sums.size(); ++s) direction.sums[s] = sums[s] - sumsBefore[s];
  const double curvature = signedProduct(variables, direction.changes, direction.sums);
  if (!(curvature > 0)) return;
  const double scale = 1 / std::sqrt(curvature);
  for (auto& [k, change] : direction.changes) change *= scale;
  for (double& sum : direction.sums) sum *= scale;
  if (directions.size() == most) directions.erase(directions.begin());
  directions.push_back(std::move(direction));
}

bool SubspaceStep::move(const SetVariables& variables, std::span<double> sums,
                        SetMachine& machine) {
  if (directions.size() < 2 || !combine(variables, sums) || !clip(variables, machine)) return false;
  const double part = length(variables, sums);
  if (!(part > 0)) return false;
  for (const std::uint64_t k : touched) {
    const double bound = variables.bound(k);
    const double near = 1e-12 * bound;
    double& a = variables.multipliers[k];
    a = std::clamp(a + part * step[k], 0.0, bound);
    if (a < near) a = 0;
    if (bound - a < near) a = bound;
  }
  for (std::size_t s = 0; s < sums.size(); ++s) sums[s] += part * stepSums[s];
  return true;
}

// The step to the minimum without bounds.
bool SubspaceStep::combine(const SetVariables& variables, std::span<const double> sums) {
  const std::size_t count = directions.size();
  products.resize(count * count);
  std::vector<double> factors(count);
  for (std::size_t a = 0; a < count; ++a) {
    for (std::size_t b = 0; b < count; ++b)
      products[a * count + b] = signedProduct(variables, directions[a].changes, directions[b].sums);
    factors[a] = -slope(variables, directions[a].changes, sums);
  }
  if (!solveFactors(factors)) return false;
  step.assign(variables.count(), 0);
  stepSums.assign(sums.size(), 0);
  touched.clear();
  for (std::size_t a = 0; a < count; ++a) {
    for (const auto& [k, change] : directions[a].changes) {
      step[k] += factors[a] * change;
      touched.push_back(k);
    }
    for (std::size_t s = 0; s < sums.size(); ++s) stepSums[s] += factors[a] * directions[a].sums[s];
  }
  std::sort(touched.begin(), touched.end());
  touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
  return true;
}

// By Cholesky's method; false where the directions nearly depend on each other.
bool SubspaceStep::solveFactors(std::vector<double>& factors) const {
  constexpr double ridge = 1e-9;
  constexpr double smallestPivot = 1e-12;
  const std::size_t count = factors.size();
  std::vector<double> lower = products;
  const auto at = [&](std::size_t a, std::size_t b) -> double& { return lower[a * count + b]; };
  for (std::size_t a = 0; a < count; ++a) {
    at(a, a) *= 1 + ridge;
    for (std::size_t b = 0; b <= a; ++b) {
      double rest = at(a, b);
      for (std::size_t z = 0; z < b; ++z) rest -= at(a, z) * at(b, z);
      if (a == b && !(rest > smallestPivot)) return false;
      at(a, b) = a == b ? std::sqrt(rest) : rest / at(b, b);
    }
  }
  for (std::size_t a = 0; a < count; ++a) {
    for (std::size_t z = 0; z < a; ++z) factors[a] -= at(a, z) * factors[z];
    factors[a] /= at(a, a);
  }
  for (std::size_t a = count; a-- > 0;) {
    for (std::size_t z = a + 1; z < count; ++z) factors[a] -= at(z, a) * factors[z];
    factors[a] /= at(a, a);
  }
  return true;
}

// Variables that would leave their bounds stop there. What that takes from a group's sum goes to
// the one of its variables with the most room.
bool SubspaceStep::clip(const SetVariables& variables, SetMachine& machine) {
  struct Group {
    double taken = 0;
    double room = 0;
    std::uint64_t roomiest = 0;
  } groups[2];
  rows.clear();
  const auto correct = [&](std::uint64_t k, double change) {
    step[k] += change;
    rows.push_back({static_cast<unsigned>(k % variables.samples), variables.isFree(k),
                    signOf(variables, k) * change});
  };
  for (const std::uint64_t k : touched) {
    Group& group = groups[variables.group(k)];
    const double next = variables.multipliers[k] + step[k];
    const double inside = std::clamp(next, 0.0, variables.bound(k));
    if (next != inside) {
      group.taken += signOf(variables, k) * (inside - next);
      correct(k, inside - next);
    } else if (const double room = std::min(next, variables.bound(k) - next); room > group.room) {
      group.room = room;
      group.roomiest = k;
    }
  }
  if (rows.size() > mostClipped) return false;
  for (const Group& group : groups) {
    if (group.taken == 0) continue;
    if (!(group.room > std::abs(group.taken))) return false;
    correct(group.roomiest, -signOf(variables, group.roomiest) * group.taken);
  }
  if (!rows.empty()) machine.addRows(rows, stepSums);
  return true;
}

// The part of the step that lowers the objective most, at most all of it.
double SubspaceStep::length(const SetVariables& variables, std::span<const double> sums) const {
  double gain = 0;
  double curvature = 0;
  for (const std::uint64_t k : touched) {
    const double sign = signOf(variables, k);
    const std::uint64_t s = k % variables.samples;
    gain -= step[k] * (sign * sums[s] + variables.linearTerm[k]);
    curvature += step[k] * sign * stepSums[s];
  }
  if (!(gain > 0)) return 0;
  return curvature > gain ? gain / curvature : 1;
}

}  // namespace zelsvm
