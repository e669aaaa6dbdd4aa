// The variables of some samples as the working-set method sees them.
#pragma once

#include <cstdint>
#include <limits>
#include <span>

#include "rules/smo_rules.h"

namespace zelsvm {

// A variable that may move and the value -y p that its violation starts from.
struct SampleMove {
  double offset;
  std::uint64_t variable;
};

// Variable k belongs to sample k, and variable k + samples too where there are twice as many. With
// two groups the variables with negative sign are the second, else there is only one. With the sums
// s = K (y α) the violation of a variable is (-y p) - s.
struct SetVariables {
  std::uint64_t samples;
  std::span<const signed char> signs;  // y: 1 or -1
  std::span<const double> linearTerm;  // p
  std::span<double> multipliers;       // α
  double Cp;                           // upper bound of variables with positive sign
  double Cn;                           // and of the others
  bool twoGroups;
  std::span<const double> factors{};  // by sample, of its variables' bounds; empty: all are 1

  [[nodiscard]] std::uint64_t count() const { return signs.size(); }
  [[nodiscard]] unsigned groups() const { return twoGroups ? 2 : 1; }
  [[nodiscard]] bool isPositive(std::uint64_t k) const { return signs[k] > 0; }
  [[nodiscard]] double factor(std::uint64_t k) const {
    return factors.empty() ? 1 : factors[k < samples ? k : k - samples];
  }
  [[nodiscard]] double bound(std::uint64_t k) const {
    return (isPositive(k) ? Cp : Cn) * factor(k);
  }
  [[nodiscard]] bool isFree(std::uint64_t k) const {
    return multipliers[k] > 0 && multipliers[k] < bound(k);
  }
  [[nodiscard]] unsigned group(std::uint64_t k) const {
    return twoGroups && !isPositive(k) ? 1 : 0;
  }
  [[nodiscard]] double offset(std::uint64_t k) const {
    return violation(isPositive(k), linearTerm[k]);
  }

  // The sum of y α over the sample's variables: its weight in all sums.
  [[nodiscard]] double weight(std::uint64_t sample) const {
    double sum = 0;
    for (std::uint64_t k = sample; k < count(); k += samples)
      sum += isPositive(k) ? multipliers[k] : -multipliers[k];
    return sum;
  }

  // The sample's variable of this group that may rise in the direction of y with the largest
  // violation; the offset is -inf where there is none.
  [[nodiscard]] SampleMove rise(std::uint64_t sample, unsigned inGroup) const {
    SampleMove best{-std::numeric_limits<double>::infinity(), count()};
    for (std::uint64_t k = sample; k < count(); k += samples)
      if (group(k) == inGroup && inUpperSet(isPositive(k), multipliers[k], bound(k)) &&
          offset(k) > best.offset)
        best = {offset(k), k};
    return best;
  }
  // The one that may fall with the smallest; inf where there is none.
  [[nodiscard]] SampleMove fall(std::uint64_t sample, unsigned inGroup) const {
    SampleMove best{std::numeric_limits<double>::infinity(), count()};
    for (std::uint64_t k = sample; k < count(); k += samples)
      if (group(k) == inGroup && inLowerSet(isPositive(k), multipliers[k], bound(k)) &&
          offset(k) < best.offset)
        best = {offset(k), k};
    return best;
  }
};

}  // namespace zelsvm
