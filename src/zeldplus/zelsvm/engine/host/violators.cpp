#include "zeldplus/zelsvm/engine/host/violators.h"

#include <algorithm>
#include <limits>

namespace zelsvm::inline ZEL_PLATFORM {

void Violators::strongest(std::vector<Violator>& list, unsigned most, bool upper,
                          const std::vector<std::uint32_t>& isKnown,
                          const VariablesView& variables) {
  list.clear();
  const SmoState wanted = upper ? inUpperBit : inLowerBit;
  const double sign = upper ? 1 : -1;
  double least = -std::numeric_limits<double>::infinity();
  for (unsigned half = 0; half < variables.halves; ++half) {
    const double* const v = variables.v + half * variables.stride;
    const SmoState* const states = variables.states + half * variables.stride;
    for (std::uint64_t k = 0; k < variables.samples; ++k) {
      const double strength = sign * v[k];
      if (!(strength > least) || (states[k] & wanted) == 0 || isKnown[k] != 0) continue;
      const auto place = std::find_if(list.begin(), list.end(), [=](const Violator& other) {
        return other.strength < strength;
      });
      list.insert(place, {strength, k});
      if (list.size() > most) list.pop_back();
      if (list.size() == most) least = list.back().strength;
    }
  }
}

void Violators::collect(std::vector<std::uint64_t>& samples, unsigned most,
                        const std::vector<std::uint32_t>& isKnown, const VariablesView& variables) {
  samples.clear();
  for (const bool upper : {true, false}) strongest(found[upper], most, upper, isKnown, variables);
  for (std::size_t k = 0; k < std::max(found[0].size(), found[1].size()); ++k)
    for (const auto& list : {&found[1], &found[0]}) {
      if (k >= list->size() || samples.size() == most) continue;
      const std::uint64_t sample = (*list)[k].sample;
      if (std::find(samples.begin(), samples.end(), sample) == samples.end())
        samples.push_back(sample);
    }
}

}  // namespace zelsvm::inline ZEL_PLATFORM
