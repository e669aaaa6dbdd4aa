#include "solver/set_start.h"

#include <algorithm>
#include <utility>

#include "solver/violators.h"

namespace zelsvm {
namespace {

// More than enough samples to know the rest by, and few enough for one set.
constexpr std::uint64_t fewest = 400;
constexpr std::uint64_t most = 4096;
constexpr std::uint64_t share = 16;

constexpr int signs[] = {1, -1};

double total(const SetVariables& variables, int sign) {
  double sum = 0;
  for (std::uint64_t k = 0; k < variables.count(); ++k)
    if (variables.signs[k] == sign) sum += variables.multipliers[k];
  return sum;
}

// What the bounds of a sign's variables add up to, in units of C.
double room(const SetVariables& variables, int sign) {
  double sum = 0;
  for (std::uint64_t k = 0; k < variables.count(); ++k)
    if (variables.signs[k] == sign) sum += variables.factor(k);
  return sum;
}

double takeUpTo(double bound, double& left) {
  const double taken = std::min(bound, left);
  left -= taken;
  return taken;
}

}  // namespace

std::vector<unsigned> startSubset(const SetVariables& variables) {
  const std::uint64_t n = variables.samples;
  const std::uint64_t size = std::min(n, std::clamp(n / share, fewest, most));
  std::vector<std::pair<std::uint32_t, unsigned>> tickets[2];
  for (unsigned s = 0; s < n; ++s)
    tickets[variables.isPositive(s) ? 0 : 1].emplace_back(shuffled(s, ~0u), s);
  std::vector<unsigned> subset;
  for (auto& list : tickets) {
    std::sort(list.begin(), list.end());
    list.resize((list.size() * size + n - 1) / n);
    for (const auto& ticket : list) subset.push_back(ticket.second);
  }
  std::sort(subset.begin(), subset.end());
  return subset;
}

void spreadTotals(const SetVariables& whole, const SetVariables& part) {
  for (const int sign : signs) {
    const double all = room(whole, sign);
    if (all == 0) continue;
    double left = total(whole, sign) * room(part, sign) / all;
    for (std::uint64_t k = 0; k < part.count(); ++k)
      if (part.signs[k] == sign) part.multipliers[k] = takeUpTo(part.bound(k), left);
  }
}

void fillLowest(const SetVariables& variables, std::span<const double> sums) {
  for (const int sign : signs) {
    double left = total(variables, sign);
    std::vector<std::pair<double, std::uint64_t>> order;
    for (std::uint64_t k = 0; k < variables.count(); ++k)
      if (variables.signs[k] == sign)
        order.emplace_back(variables.linearTerm[k] + sign * sums[k % variables.samples], k);
    std::sort(order.begin(), order.end());
    for (const auto& [gradient, k] : order)
      variables.multipliers[k] = takeUpTo(variables.bound(k), left);
  }
}

}  // namespace zelsvm
