// The variables of a working set, side by side.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/set_variables.h"

namespace zelsvm {

struct ChosenSet {
  std::vector<unsigned> samples;  // ascending
  std::vector<signed char> signs;
  std::vector<double> terms;
  std::vector<double> multipliers;
  std::vector<double> sums;

  // Copies what the samples' variables have in the whole problem; the sums stay.
  void take(const SetVariables& whole) {
    signs.clear();
    terms.clear();
    multipliers.clear();
    factors.clear();
    if (!whole.factors.empty())
      for (const unsigned s : samples) factors.push_back(whole.factors[s]);
    for (std::uint64_t first = 0; first < whole.count(); first += whole.samples)
      for (const unsigned s : samples) {
        signs.push_back(whole.signs[first + s]);
        terms.push_back(whole.linearTerm[first + s]);
        multipliers.push_back(whole.multipliers[first + s]);
      }
    twoGroups = whole.twoGroups;
    Cp = whole.Cp;
    Cn = whole.Cn;
  }
  [[nodiscard]] SetVariables variables() {
    return {samples.size(), signs, terms, multipliers, Cp, Cn, twoGroups, factors};
  }

  double Cp = 0;
  double Cn = 0;
  bool twoGroups = false;
  std::vector<double> factors;
};

}  // namespace zelsvm
