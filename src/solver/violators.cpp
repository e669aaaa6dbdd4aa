#include "solver/violators.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace zelsvm {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
// While the gap is as large as the margin the mean violation of the free variables, if there are
// some, is nearer to the offset than the middle of the extremes.
constexpr double wideGap = 0.5;
constexpr std::uint64_t enoughFree = 8;
constexpr double leastShare = 0.1;

double middleOf(const GroupState& state) {
  const double gap = state.gap();
  if (state.freeCount < enoughFree || gap <= wideGap) return (state.up + state.low) / 2;
  return std::clamp(state.freeSum / static_cast<double>(state.freeCount),
                    state.low + leastShare * gap, state.up - leastShare * gap);
}

}  // namespace

std::uint32_t shuffled(std::uint32_t sample, std::uint32_t step) {
  std::uint32_t h = sample * 2654435761u + step * 40503u;
  h ^= h >> 15;
  h *= 2246822519u;
  return h ^ (h >> 13);
}

void Violators::look(const SetVariables& variables, std::span<const double> sums) {
  states[1] = {.up = -infinity, .low = infinity};
  for (unsigned g = 0; g < variables.groups(); ++g) {
    GroupState state{.up = -infinity, .low = infinity};
    for (std::uint64_t s = 0; s < variables.samples; ++s) {
      const SampleMove rise = variables.rise(s, g);
      const SampleMove fall = variables.fall(s, g);
      state.up = std::max(state.up, rise.offset - sums[s]);
      state.low = std::min(state.low, fall.offset - sums[s]);
      if (rise.variable != fall.variable || rise.variable == variables.count()) continue;
      state.freeSum += rise.offset - sums[s];
      ++state.freeCount;
    }
    states[g] = state;
  }
}

double Violators::gap() const { return std::max(states[0].gap(), states[1].gap()); }

void Violators::listNear(const SetVariables& variables, std::span<const double> sums, double margin,
                         std::vector<unsigned>& samples) const {
  samples.clear();
  for (unsigned s = 0; s < variables.samples; ++s) {
    bool isNear = false;
    for (unsigned g = 0; g < variables.groups(); ++g)
      isNear = isNear || variables.rise(s, g).offset - sums[s] > states[g].up - margin ||
               variables.fall(s, g).offset - sums[s] < states[g].low + margin;
    if (isNear) samples.push_back(s);
  }
}

void Violators::choose(const SetVariables& variables, std::span<const double> sums,
                       double tolerance, std::uint64_t most, std::uint32_t step,
                       std::vector<unsigned>& set) {
  if (most >= variables.samples) {
    set.resize(variables.samples);
    return std::iota(set.begin(), set.end(), 0u);
  }
  chosen.assign(variables.samples, 0);
  set.clear();
  for (auto& list : tickets) list.clear();
  for (unsigned g = 0; g < variables.groups(); ++g)
    if (states[g].gap() > tolerance / 2) list(variables, sums, g, step);
  for (auto& list : tickets) keepFirst(list, most);
  std::uint64_t next[4] = {};
  for (bool any = true; any && set.size() < most;) {
    any = false;
    for (unsigned t = 0; t < 4 && set.size() < most; ++t) {
      while (next[t] < tickets[t].size() && chosen[tickets[t][next[t]].second] != 0) ++next[t];
      if (next[t] == tickets[t].size()) continue;
      const unsigned sample = tickets[t][next[t]++].second;
      chosen[sample] = 1;
      set.push_back(sample);
      any = true;
    }
  }
  std::sort(set.begin(), set.end());
}

void Violators::list(const SetVariables& variables, std::span<const double> sums, unsigned g,
                     std::uint32_t step) {
  const double middle = middleOf(states[g]);
  std::vector<Ticket>& rising = tickets[std::size_t{2} * g];
  std::vector<Ticket>& falling = tickets[std::size_t{2} * g + 1];
  for (unsigned s = 0; s < variables.samples; ++s) {
    if (variables.rise(s, g).offset - sums[s] > middle) rising.emplace_back(shuffled(s, step), s);
    if (variables.fall(s, g).offset - sums[s] < middle) falling.emplace_back(shuffled(s, step), s);
  }
}

void Violators::keepFirst(std::vector<Ticket>& list, std::uint64_t most) {
  if (list.size() > most) {
    std::nth_element(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(most), list.end());
    list.resize(most);
  }
  std::sort(list.begin(), list.end());
}

}  // namespace zelsvm
