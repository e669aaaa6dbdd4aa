#include "platform/host/solver/lookahead.h"

#include <algorithm>
#include <limits>

#include "rules/smo_rules.h"

namespace zelsvm {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
// Variables taken from each side.
constexpr std::size_t perSide = 48;

}  // namespace

// Adds the strongest variables of one kind to the set.
void Lookahead::collect(const LookaheadView& view, SmoState mask, SmoState wanted) {
  const double sign = (wanted & inUpperBit) != 0 ? 1 : -1;
  double least = -infinity;
  list.clear();
  const auto keepStrongest = [&] {
    if (list.size() <= perSide) return;
    const auto last = list.begin() + perSide - 1;
    std::nth_element(list.begin(), last, list.end(), [](const Candidate& a, const Candidate& b) {
      return a.strength > b.strength;
    });
    least = last->strength;
    list.resize(perSide);
  };
  for (unsigned half = 0; half < view.halves; ++half) {
    const auto& [v, states, offset] = view.variables;
    for (std::uint64_t q = 0; q < view.samples; ++q) {
      const double strength = sign * (v[q] + offset[half]);
      if (!(strength > least) || (states[half][q] & mask) != wanted) continue;
      list.push_back({strength, half * view.samples + q});
      if (list.size() == 2 * perSide) keepStrongest();
    }
  }
  keepStrongest();
  for (const Candidate& candidate : list) take(view, candidate.variable);
}

void Lookahead::take(const LookaheadView& view, std::uint64_t variable) {
  for (const Variable& other : set)
    if (other.variable == variable) return;
  const unsigned half = variable < view.samples ? 0 : 1;
  const std::uint64_t sample = variable - half * view.samples;
  const auto& [v, states, offset] = view.variables;
  const bool positive = (states[half][sample] & positiveBit) != 0;
  set.push_back({variable, positive, v[sample] + offset[half], view.alpha[variable],
                 positive ? view.Cp : view.Cn,
                 view.diagonal == nullptr ? 1 : view.diagonal[sample]});
  setSamples.push_back(sample);
}

const double* Lookahead::row(std::size_t t) {
  double* const target = values.data() + t * set.size();
  if (!known[t]) kernel->pairValues(t, target);
  known[t] = true;
  return target;
}

void Lookahead::move(std::size_t i, std::size_t j, double stepI, double stepJ) {
  const double* const rowI = row(i);
  const double* const rowJ = row(j);
  for (std::size_t t = 0; t < set.size(); ++t)
    set[t].v -= fusedMultiplyAdd(stepI, rowI[t], rowJ[t] * stepJ);
}

std::size_t Lookahead::strongest(bool nu, bool positive) const {
  std::size_t best = none;
  double up = -infinity;
  for (std::size_t t = 0; t < set.size(); ++t) {
    const Variable& x = set[t];
    if ((nu && x.positive != positive) || !inUpperSet(x.positive, x.a, x.c) || !(x.v > up))
      continue;
    up = x.v;
    best = t;
  }
  return best;
}

// first: the first index for positive and for other variables.
std::size_t Lookahead::partner(const std::size_t* first, bool nu) {
  std::size_t best = none;
  double gain = -infinity;
  for (std::size_t t = 0; t < set.size(); ++t) {
    const Variable& x = set[t];
    const std::size_t i = first[nu && !x.positive];
    if (i == none || !inLowerSet(x.positive, x.a, x.c)) continue;
    const double b = set[i].v - x.v;
    const double candidate =
        b > 0 ? -pairGain(b, pairCurvature(set[i].diagonal + x.diagonal, row(i)[t])) : -infinity;
    if (!(candidate > gain)) continue;
    gain = candidate;
    best = t;
  }
  return best;
}

// One iteration; false where there is no pair.
bool Lookahead::step(std::vector<std::size_t>& pair, bool nu) {
  const std::size_t first[2] = {strongest(nu, true), nu ? strongest(nu, false) : none};
  const std::size_t j = partner(first, nu);
  if (j == none) return false;
  const std::size_t i = first[nu && !set[j].positive];
  Variable& x = set[i];
  Variable& y = set[j];
  const bool sameSign = x.positive == y.positive;
  const double delta = pairStep(sameSign, violation(x.positive, x.v), violation(y.positive, y.v),
                                pairCurvature(x.diagonal + y.diagonal, row(i)[j]));
  const PairValues moved = clippedPair(sameSign, {x.a, y.a}, delta, {x.c, y.c});
  const double stepI = x.positive ? moved.i - x.a : x.a - moved.i;
  const double stepJ = y.positive ? moved.j - y.a : y.a - moved.j;
  x.a = moved.i;
  y.a = moved.j;
  move(i, j, stepI, stepJ);
  pair = {first[0], j};
  if (nu) pair.push_back(first[1]);
  return true;
}

void Lookahead::forecast(std::vector<std::uint64_t>& samples, unsigned most,
                         const std::vector<std::uint32_t>& isKnown, KernelRows& kernelRows,
                         const LookaheadView& view, const PendingStep* pending) {
  samples.clear();
  set.clear();
  setSamples.clear();
  if (pending != nullptr) {
    take(view, pending->i);
    take(view, pending->j);
  }
  for (const SmoState side : {inUpperBit, inLowerBit}) {
    if (view.nu) {
      collect(view, side | positiveBit, side | positiveBit);
      collect(view, side | positiveBit, side);
    } else {
      collect(view, side, side);
    }
  }
  kernel = &kernelRows;
  kernel->choose(setSamples);
  known.assign(set.size(), false);
  values.resize(set.size() * set.size());
  if (pending != nullptr) move(0, 1, pending->stepI, pending->stepJ);
  std::vector<std::size_t> chosen;
  for (unsigned round = 0; round < 2 * most && samples.size() < most && step(chosen, view.nu);
       ++round)
    for (const std::size_t t : chosen) {
      if (t == none || isKnown[setSamples[t]] != 0 || samples.size() == most) continue;
      if (std::find(samples.begin(), samples.end(), setSamples[t]) == samples.end())
        samples.push_back(setSamples[t]);
    }
}

}  // namespace zelsvm
