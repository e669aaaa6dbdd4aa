// The variables of some samples as the working-set method sees them.
#pragma once

#include <cstdint>
#include <span>

#include "rules/smo_rules.h"

namespace zelsvm {

// A variable that may move and the value -y p that its violation starts from.
struct SampleMove {
  double offset;
  std::uint64_t variable;
};

// What a pair's move adds to the sums: steps times the kernel rows of the two samples.
struct SetStep {
  double i;
  double j;
};

// Variable k belongs to sample k, and variable k + samples too where there are twice as many. With
// two groups the variables with negative sign are the second, else there is only one. With the sums
// s = K (y α) the violation of a variable is (-y p) - s. Span is std::span or a device's like it.
template <template <typename> typename Span>
struct SetVariablesIn {
  std::uint64_t samples;
  Span<const signed char> signs;  // y: 1 or -1
  Span<const double> linearTerm;  // p
  Span<double> multipliers;       // α
  double Cp;                      // upper bound of variables with positive sign
  double Cn;                      // and of the others
  bool twoGroups;
  Span<const double> factors{};  // by sample, of its variables' bounds; empty: all are 1

  [[nodiscard]] ZEL_RULE std::uint64_t count() const { return signs.size(); }
  [[nodiscard]] ZEL_RULE unsigned groups() const { return twoGroups ? 2 : 1; }
  [[nodiscard]] ZEL_RULE bool isPositive(std::uint64_t k) const { return signs[k] > 0; }
  [[nodiscard]] ZEL_RULE double factor(std::uint64_t k) const {
    return factors.size() == 0 ? 1 : factors[k < samples ? k : k - samples];
  }
  [[nodiscard]] ZEL_RULE double bound(std::uint64_t k) const {
    return (isPositive(k) ? Cp : Cn) * factor(k);
  }
  [[nodiscard]] ZEL_RULE bool isFree(std::uint64_t k) const {
    return multipliers[k] > 0 && multipliers[k] < bound(k);
  }
  [[nodiscard]] ZEL_RULE unsigned group(std::uint64_t k) const {
    return twoGroups && !isPositive(k) ? 1 : 0;
  }
  [[nodiscard]] ZEL_RULE double offset(std::uint64_t k) const {
    return violation(isPositive(k), linearTerm[k]);
  }

  // The sum of y α over the sample's variables: its weight in all sums.
  [[nodiscard]] ZEL_RULE double weight(std::uint64_t sample) const {
    double sum = 0;
    for (std::uint64_t k = sample; k < count(); k += samples)
      sum += isPositive(k) ? multipliers[k] : -multipliers[k];
    return sum;
  }

  // The sample's variable of this group that may rise in the direction of y with the largest
  // violation; the offset is -inf where there is none.
  [[nodiscard]] ZEL_RULE SampleMove rise(std::uint64_t sample, unsigned inGroup) const {
    SampleMove best{-__builtin_inf(), count()};
    for (std::uint64_t k = sample; k < count(); k += samples)
      if (group(k) == inGroup && inUpperSet(isPositive(k), multipliers[k], bound(k)) &&
          offset(k) > best.offset)
        best = {offset(k), k};
    return best;
  }
  // The one that may fall with the smallest; inf where there is none.
  [[nodiscard]] ZEL_RULE SampleMove fall(std::uint64_t sample, unsigned inGroup) const {
    SampleMove best{__builtin_inf(), count()};
    for (std::uint64_t k = sample; k < count(); k += samples)
      if (group(k) == inGroup && inLowerSet(isPositive(k), multipliers[k], bound(k)) &&
          offset(k) < best.offset)
        best = {offset(k), k};
    return best;
  }

  // Moves the multipliers of a pair of variables to their constrained optimum.
  ZEL_RULE SetStep move(const SampleMove& rising, const SampleMove& falling, const PairValues& sums,
                        double curvature) const {
    const bool positiveI = isPositive(rising.variable);
    const bool positiveJ = isPositive(falling.variable);
    const bool sameSign = positiveI == positiveJ;
    const double gradientI = violation(positiveI, rising.offset - sums.i);
    const double gradientJ = violation(positiveJ, falling.offset - sums.j);
    double& a = multipliers[rising.variable];
    double& b = multipliers[falling.variable];
    const PairValues next =
        clippedPair(sameSign, {a, b}, pairStep(sameSign, gradientI, gradientJ, curvature),
                    {bound(rising.variable), bound(falling.variable)});
    const double deltaI = next.i - a;
    const double deltaJ = next.j - b;
    a = next.i;
    b = next.j;
    return {positiveI ? deltaI : -deltaI, positiveJ ? deltaJ : -deltaJ};
  }
};

template <typename T>
using HostSpan = std::span<T>;
using SetVariables = SetVariablesIn<HostSpan>;

}  // namespace zelsvm
