#include "platform/host/sets/set_sweeps.h"

#include "platform/host/isa/extremes.h"
#include "platform/host/isa/lanes.h"
#include "rules/smo_rules.h"

namespace zelsvm::ZEL_ISA {
namespace {

constexpr double infinity = __builtin_inf();
static_assert(setLanes % (2 * lanes) == 0);
// Samples whose maximum is taken before anyone asks where it lies.
constexpr std::uint64_t blockSize = 256;

ZEL_RULE Pack load(const double* p) { return hn::Load(doubles, p); }
ZEL_RULE Pack load(const float* p) {
  return hn::PromoteTo(doubles, hn::Load(hn::Rebind<float, Doubles>(), p));
}

// Running extremes of one group, in two parts that do not wait for each other. What is not a number
// never wins.
struct Extremes {
  Pack up[2] = {hn::Set(doubles, -infinity), hn::Set(doubles, -infinity)};
  Pack low[2] = {hn::Set(doubles, infinity), hn::Set(doubles, infinity)};

  ZEL_RULE void take(int part, const double* rises, const double* falls, Pack sum) {
    up[part] = larger(hn::Sub(load(rises), sum), up[part]);
    low[part] = smaller(hn::Sub(load(falls), sum), low[part]);
  }
  ZEL_RULE double highest() const { return largestOf(larger(up[0], up[1])); }
  ZEL_RULE double lowest() const { return smallestOf(smaller(low[0], low[1])); }
};

// Products and sums are rounded one by one: processors without fused operations agree.
template <typename K>
struct Update {
  const K* rowI;
  const K* rowJ;
  Pack stepI;
  Pack stepJ;

  ZEL_RULE Pack apply(double* sums, std::uint64_t r) const {
    const Pack sum = hn::Add(
        load(sums + r), hn::Add(hn::Mul(stepI, load(rowI + r)), hn::Mul(stepJ, load(rowJ + r))));
    hn::Store(sum, doubles, sums + r);
    return sum;
  }
};

struct GroupExtremes {
  SmoUpperBeta<double> beta{-infinity, infinity};
  std::uint64_t block = 0;  // that has the largest first

  ZEL_RULE void take(const Extremes& extremes, std::uint64_t newBlock) {
    const double high = extremes.highest();
    const double low = extremes.lowest();
    if (high > beta.up) {
      beta.up = high;
      block = newBlock;
    }
    if (low < beta.low) beta.low = low;
  }
};

template <unsigned groups, typename K>
ZEL_RULE void sweep(const SetArrays& arrays, const Update<K>& update, GroupExtremes* found) {
  for (std::uint64_t first = 0; first < arrays.size; first += blockSize) {
    const std::uint64_t end = arrays.size - first < blockSize ? arrays.size : first + blockSize;
    Extremes extremes[groups];
    for (std::uint64_t r = first; r < end; r += 2 * lanes)
      for (int part = 0; part < 2; ++part) {
        const std::uint64_t at = r + static_cast<std::uint64_t>(part) * lanes;
        const Pack sum = update.apply(arrays.sums, at);
        for (unsigned g = 0; g < groups; ++g)
          extremes[g].take(part, arrays.rises[g] + at, arrays.falls[g] + at, sum);
      }
    for (unsigned g = 0; g < groups; ++g) found[g].take(extremes[g], first);
  }
}

template <typename K>
SetExtremes findFirst(const SetArrays& arrays, const K* rowI, double stepI, const K* rowJ,
                      double stepJ) {
  const Update<K> update{rowI, rowJ, hn::Set(doubles, stepI), hn::Set(doubles, stepJ)};
  GroupExtremes found[2];
  arrays.groups == 2 ? sweep<2>(arrays, update, found) : sweep<1>(arrays, update, found);
  const auto gap = [&](unsigned g) { return found[g].beta.up - found[g].beta.low; };
  const unsigned group = arrays.groups == 2 && gap(1) > gap(0) ? 1 : 0;
  const GroupExtremes& widest = found[group];
  for (std::uint64_t r = widest.block; r < arrays.size; ++r)
    if (arrays.rises[group][r] - arrays.sums[r] == widest.beta.up)
      return {widest.beta, group, static_cast<unsigned>(r)};
  return {widest.beta, group, noIndex};
}

// Few samples promise more than the best before them. A product tells most of the others, with a
// margin for its rounding; only what passes is divided.
template <typename K>
unsigned findSecond(const SetArrays& arrays, unsigned group, const K* rowI, double up,
                    double diagonalI) {
  constexpr double margin = 1 + 0x1p-40;
  const Doubles d;
  SmoLowerBeta<double> best{0, noIndex};
  Pack bar = hn::Zero(d);
  const auto consider = [&](std::uint64_t r) {
    const double b = up - (arrays.falls[group][r] - arrays.sums[r]);
    if (!(b > 0)) return;
    const double gain =
        pairGain(b, pairCurvature(diagonalI + arrays.diagonal[r], static_cast<double>(rowI[r])));
    if (gain < best.value) best = {gain, static_cast<unsigned>(r)};
  };
  for (std::uint64_t r = 0; r < arrays.size; r += lanes) {
    const Pack b = larger(
        hn::Sub(hn::Set(d, up), hn::Sub(load(arrays.falls[group] + r), load(arrays.sums + r))),
        hn::Zero(d));
    const Pack curvature = hn::Sub(hn::Add(hn::Set(d, diagonalI), load(arrays.diagonal + r)),
                                   hn::Mul(hn::Set(d, 2.0), load(rowI + r)));
    const auto passes = hn::Gt(hn::Mul(hn::Mul(b, b), hn::Set(d, margin)), hn::Mul(bar, curvature));
    if (HWY_LIKELY(hn::AllFalse(d, passes))) continue;
    for (std::uint64_t lane = 0; lane < lanes; ++lane) consider(r + lane);
    bar = hn::Set(d, -best.value);
  }
  return best.index;
}

}  // namespace

extern const SetSweepTable setSweepTable;
const SetSweepTable setSweepTable{{findFirst<float>, findSecond<float>},
                                  {findFirst<double>, findSecond<double>}};

}  // namespace zelsvm::ZEL_ISA
