#include "platform/host/sets/set_sweeps.h"

#include <algorithm>
#include <limits>

#include "rules/smo_rules.h"

namespace zelsvm {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

template <typename K>
SetExtremes findFirst(const SetArrays& arrays, const K* rowI, double stepI, const K* rowJ,
                      double stepJ) {
  for (std::uint64_t r = 0; r < arrays.size; ++r)
    arrays.sums[r] =
        fusedMultiplyAdd(stepJ, static_cast<double>(rowJ[r]),
                         fusedMultiplyAdd(stepI, static_cast<double>(rowI[r]), arrays.sums[r]));
  SetExtremes found{{{-infinity, infinity}, {-infinity, infinity}}, 0, noIndex};
  unsigned first[2] = {noIndex, noIndex};
  for (unsigned g = 0; g < arrays.groups; ++g)
    for (std::uint64_t r = 0; r < arrays.size; ++r) {
      const double up = arrays.rises[g][r] - arrays.sums[r];
      if (up > found.beta[g].up) {
        found.beta[g].up = up;
        first[g] = static_cast<unsigned>(r);
      }
      found.beta[g].low = std::min(found.beta[g].low, arrays.falls[g][r] - arrays.sums[r]);
    }
  const auto gap = [&](unsigned g) { return found.beta[g].up - found.beta[g].low; };
  found.group = arrays.groups == 2 && gap(1) > gap(0) ? 1 : 0;
  found.index = first[found.group];
  return found;
}

template <typename K>
unsigned findSecond(const SetArrays& arrays, unsigned group, const K* rowI, double up,
                    double diagonalI) {
  SmoLowerBeta<double> best{0, noIndex};
  for (std::uint64_t r = 0; r < arrays.size; ++r) {
    const double b = up - (arrays.falls[group][r] - arrays.sums[r]);
    if (!(b > 0)) continue;
    const double gain =
        pairGain(b, pairCurvature(diagonalI + arrays.diagonal[r], static_cast<double>(rowI[r])));
    if (gain < best.value) best = {gain, static_cast<unsigned>(r)};
  }
  return best.index;
}

}  // namespace

template <typename K>
const SetSweeps<K>& setSweeps() {
  static constexpr SetSweeps<K> sweeps{findFirst<K>, findSecond<K>};
  return sweeps;
}

template const SetSweeps<float>& setSweeps();
template const SetSweeps<double>& setSweeps();

}  // namespace zelsvm
