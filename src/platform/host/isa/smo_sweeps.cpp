#include "platform/host/sweeps/smo_sweeps.h"

#include <hwy/cache_control.h>

#include "platform/host/isa/extremes.h"
#include "rules/smo_rules.h"

namespace zelsvm::ZEL_ISA {
namespace {

using Numbers = hn::RebindToSigned<Doubles>;
using Bits = hn::Vec<Numbers>;

constexpr Numbers numbers;

constexpr double infinity = __builtin_inf();
// Variables whose maximum is taken before anyone asks where it lies.
constexpr std::uint64_t blockSize = 256;

// Kernel rows come from far away, once each; everything else stays in the second-level cache.
constexpr std::uint64_t fetchedAhead = 512;
constexpr std::uint64_t line = 8;  // elements

HWY_INLINE void fetch(const double* row) { hwy::Prefetch(row + fetchedAhead); }
HWY_INLINE Pack splat(double value) { return hn::Set(doubles, value); }
HWY_INLINE Pack load(const double* from) { return hn::LoadU(doubles, from); }

// What selections are made in.
enum class Groups { all, bySign, byHalf };

template <Groups groups>
constexpr int groupCount = groups == Groups::all ? 1 : 2;

// Packs handled together, so that running extremes do not wait for one another, as far as there are
// registers for them.
template <Groups groups>
constexpr int unroll = lanes < 8 && groups != Groups::byHalf ? 4 : 2;
template <Groups groups>
constexpr std::uint64_t unrolled = std::uint64_t{unroll<groups>} * lanes;
static_assert(sweepStep % unrolled<Groups::all> == 0 && blockSize % sweepStep == 0);

// A state byte per lane. A lane's sign tells one bit of it; only signs are looked at.
struct States {
  Bits bytes;

  static HWY_INLINE States at(const SmoState* states) {
    const auto narrow =
        hn::LoadU(hn::Rebind<std::int8_t, Numbers>(), reinterpret_cast<const std::int8_t*>(states));
    return {hn::PromoteTo(numbers, hn::PromoteTo(hn::Rebind<std::int32_t, Numbers>(), narrow))};
  }
  [[nodiscard]] HWY_INLINE Bits inUpper() const { return bytes; }
  [[nodiscard]] HWY_INLINE Bits inLower() const { return hn::ShiftLeft<57>(bytes); }
  [[nodiscard]] HWY_INLINE Bits positive() const { return hn::ShiftLeft<63>(bytes); }
};

HWY_INLINE Pack where(Bits sign, Pack a, Pack b) {
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128  // which compare: no sign of a NaN
  return hn::IfThenElse(hn::RebindMask(doubles, hn::Lt(sign, hn::Zero(numbers))), a, b);
#else
  return hn::IfNegativeThenElse(hn::BitCast(doubles, sign), a, b);
#endif
}

// Running extremes of one group in one block, lane by lane. What is not a number never wins.
template <int unroll>
struct Extremes {
  Pack up[unroll];
  Pack low[unroll];

  HWY_INLINE Extremes() {
    for (int u = 0; u < unroll; ++u) {
      up[u] = splat(-infinity);
      low[u] = splat(infinity);
    }
  }
  HWY_INLINE void take(int u, Bits inUpper, Bits inLower, Pack v) {
    up[u] = larger(where(inUpper, v, splat(-infinity)), up[u]);
    low[u] = smaller(where(inLower, v, splat(infinity)), low[u]);
  }
  [[nodiscard]] HWY_INLINE double highest() const {
    Pack m = up[0];
    for (int u = 1; u < unroll; ++u) m = larger(up[u], m);
    return largestOf(m);
  }
  [[nodiscard]] HWY_INLINE Pack lowest(Pack m) const {
    for (const Pack& l : low) m = smaller(l, m);
    return m;
  }
};

// What a group's variables are among.
template <Groups groups>
struct Group {
  const SmoState* states;
  Pack offset;
  int index;

  HWY_INLINE Group(const SweptVariables& variables, int index)
      : states(variables.states[groups == Groups::byHalf ? index : 0]),
        offset(splat(variables.offset[groups == Groups::byHalf ? index : 0])),
        index(index) {}

  [[nodiscard]] HWY_INLINE Pack value(Pack v) const {
    return groups == Groups::byHalf ? hn::Add(v, offset) : v;
  }
  [[nodiscard]] HWY_INLINE Bits members(const States& s, Bits membership) const {
    if constexpr (groups != Groups::bySign) return membership;
    return index == 0 ? hn::And(membership, s.positive()) : hn::AndNot(s.positive(), membership);
  }

  // First position from here where a member of the upper set has this value.
  [[nodiscard]] HWY_INLINE std::uint64_t firstWith(const double* v, std::uint64_t from,
                                                   double wanted) const {
    for (std::uint64_t k = from;; k += lanes) {
      const States s = States::at(states + k);
      const Pack candidates = where(members(s, s.inUpper()), value(load(v + k)), splat(-infinity));
      const auto found = hn::FindFirstTrue(doubles, hn::Eq(candidates, splat(wanted)));
      if (found >= 0) return k + static_cast<std::uint64_t>(found);
    }
  }
};

template <Groups groups, typename Update>
HWY_INLINE void selectRange(const SweptVariables& variables, std::uint64_t begin, std::uint64_t end,
                            const Update& update, SelectedUpper* best) {
  constexpr int count = groupCount<groups>;
  constexpr int together = unroll<groups>;
  const Group<groups> members[2] = {{variables, 0}, {variables, count - 1}};
  std::uint64_t bestBlock[count];
  bool better[count] = {};
  Pack low[count];
  for (Pack& l : low) l = splat(infinity);
  for (std::uint64_t from = begin; from < end; from += blockSize) {
    const std::uint64_t to = end - from < blockSize ? end : from + blockSize;
    Extremes<together> extremes[count];
    for (std::uint64_t k = from; k < to; k += unrolled<groups>)
      for (int u = 0; u < together; ++u) {
        const std::uint64_t q = k + static_cast<std::uint64_t>(u) * lanes;
        const Pack v = update.at(q);
        for (int g = 0; g < count; ++g) {
          const Group<groups>& group = members[g];
          const States s = States::at(group.states + q);
          extremes[g].take(u, group.members(s, s.inUpper()), group.members(s, s.inLower()),
                           group.value(v));
        }
      }
    for (int g = 0; g < count; ++g) {
      low[g] = extremes[g].lowest(low[g]);
      const double highest = extremes[g].highest();
      if (!(highest > best[g].up)) continue;
      best[g].up = highest;
      bestBlock[g] = from;
      better[g] = true;
    }
  }
  for (int g = 0; g < count; ++g) {
    if (better[g])
      best[g].position =
          static_cast<std::int64_t>(members[g].firstWith(variables.v, bestBlock[g], best[g].up));
    const double lowest = smallestOf(low[g]);
    best[g].low = lowest < best[g].low ? lowest : best[g].low;
  }
}

struct NoUpdate {
  const double* v;
  [[nodiscard]] HWY_INLINE Pack at(std::uint64_t q) const { return load(v + q); }
};

template <Groups groups>
void selectUpper(const SweptVariables& variables, std::uint64_t begin, std::uint64_t end,
                 SelectedUpper* best) {
  selectRange<groups>(variables, begin, end, NoUpdate{variables.v}, best);
}

struct StepUpdate {
  double* v;
  const double* rowI;
  const double* rowJ;
  Pack stepI;
  Pack stepJ;

  [[nodiscard]] HWY_INLINE Pack at(std::uint64_t q) const {
    if (q % line == 0) {
      fetch(rowI + q);
      fetch(rowJ + q);
    }
    const Pack change = hn::MulAdd(stepI, load(rowI + q), hn::Mul(load(rowJ + q), stepJ));
    const Pack moved = hn::Sub(load(v + q), change);
    hn::StoreU(moved, doubles, v + q);
    return moved;
  }
};

template <Groups groups>
void updateAndSelect(const SweptVariables& variables, const GradientStep& step, std::uint64_t begin,
                     std::uint64_t end, SelectedUpper* best) {
  const StepUpdate update{variables.v, step.rowI, step.rowJ, splat(step.stepI), splat(step.stepJ)};
  selectRange<groups>(variables, begin, end, update, best);
}

// The best pair so far. Candidates that may be better are rare, so only these are looked at
// closely: the test takes a curvature that is not positive for a tiny one, and its factor keeps
// rounding from losing one. Without any yet, all that gain something are.
struct GainTest {
  Pack threshold;

  HWY_INLINE explicit GainTest(double best) { raise(best); }
  HWY_INLINE void raise(double best) { threshold = splat(best > 0 ? best * (1 - 0x1p-50) : 0); }
  // What the square of a difference in v is to exceed.
  [[nodiscard]] HWY_INLINE Pack leastSquare(Pack diagonalSum, Pack k) const {
    const Pack q = hn::MulAdd(k, splat(-2), diagonalSum);
    return hn::Mul(larger(q, splat(0x1p-1022)), threshold);
  }
};

// The search for the second index.
template <bool halves, bool nu, bool unitDiagonal>
struct LowerSearch {
  static constexpr int count = halves ? 2 : 1;
  static constexpr int together = unroll<Groups::all> / count;
  static constexpr std::uint64_t step = std::uint64_t{together} * lanes;

  const SweptVariables& variables;
  const LowerQuery& query;

  static HWY_INLINE double most(const SelectedLower* best) {
    return best[0].gain > best[count - 1].gain ? best[0].gain : best[count - 1].gain;
  }

  // What a variable of this sign and half is paired with.
  static HWY_INLINE int classOf(bool positive, int half) {
    if constexpr (!nu) return 0;
    return (halves ? half == 0 : positive) ? 0 : 1;
  }

  // The lanes that may be better.
  [[nodiscard]] HWY_INLINE hn::Mask<Doubles> lanesAt(std::uint64_t q, int half,
                                                     const GainTest& test) const {
    const States s = States::at(variables.states[half] + q);
    const int cls = halves && nu ? half : 0;
    Pack up = splat(query.up[cls]);
    if constexpr (nu && !halves) up = where(s.positive(), up, splat(query.up[1]));
    const Pack v = load(variables.v + q);
    Pack b = hn::Sub(up, halves ? hn::Add(v, splat(variables.offset[half])) : v);
    b = larger(where(s.inLower(), b, splat(0)), splat(0));
    return hn::Gt(hn::Mul(b, b),
                  test.leastSquare(diagonalSums(q, cls, s), kernelValues(q, cls, s)));
  }

  [[nodiscard]] HWY_INLINE Pack kernelValues(std::uint64_t q, int cls, const States& s) const {
    const Pack k = load(query.row[cls] + q);
    if constexpr (nu && !halves) return where(s.positive(), k, load(query.row[1] + q));
    return k;
  }
  [[nodiscard]] HWY_INLINE Pack diagonalSums(std::uint64_t q, int cls, const States& s) const {
    if constexpr (unitDiagonal) return splat(2);
    Pack diagonal = splat(query.diagonal[cls]);
    if constexpr (nu && !halves) diagonal = where(s.positive(), diagonal, splat(query.diagonal[1]));
    return hn::Add(diagonal, load(query.diagonals + q));
  }

  // Minus infinity for none.
  [[nodiscard]] HWY_INLINE double gainAt(std::uint64_t q, int half) const {
    const int cls = classOf((variables.states[half][q] & positiveBit) != 0, half);
    const double v = variables.v[q];
    const double b = query.up[cls] - (halves ? v + variables.offset[half] : v);
    const double diagonals = unitDiagonal ? 2 : query.diagonal[cls] + query.diagonals[q];
    return b > 0 ? -pairGain(b, pairCurvature(diagonals, query.row[cls][q])) : -infinity;
  }

  HWY_INLINE void run(std::uint64_t begin, std::uint64_t end, SelectedLower* best) const {
    GainTest test(most(best));
    for (std::uint64_t k = begin; k < end; k += step) {
      for (std::uint64_t q = k; q < k + step; q += line)
        for (int row = 0; row < (nu ? 2 : 1); ++row) fetch(query.row[row] + q);
      hn::Mask<Doubles> any = lanesAt(k, 0, test);
      for (int part = 1; part < together * count; ++part)
        any = hn::Or(
            any, lanesAt(k + static_cast<std::uint64_t>(part / count) * lanes, part % count, test));
      if (hn::AllFalse(doubles, any)) continue;
      for (int u = 0; u < together; ++u)
        for (int half = 0; half < count; ++half)
          choose(k + static_cast<std::uint64_t>(u) * lanes, half, test, best);
    }
  }

  // Those of a pack that beat the best of their half become it, the first of equals.
  HWY_INLINE void choose(std::uint64_t q, int half, GainTest& test, SelectedLower* best) const {
    std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(doubles, lanesAt(q, half, test), bytes);
    for (unsigned bits = bytes[0]; bits != 0; bits &= bits - 1) {
      const std::uint64_t position = q + static_cast<std::uint64_t>(__builtin_ctz(bits));
      const double gain = gainAt(position, half);
      if (!(gain > best[half].gain)) continue;
      best[half] = {gain, static_cast<std::int64_t>(position)};
      test.raise(most(best));
    }
  }
};

template <bool halves, bool nu, bool unitDiagonal>
void selectLower(const SweptVariables& variables, const LowerQuery& query, std::uint64_t begin,
                 std::uint64_t end, SelectedLower* best) {
  const LowerSearch<halves, nu, unitDiagonal> search{variables, query};
  search.run(begin, end, best);
}

}  // namespace

extern const SmoSweeps smoSweepTable;
const SmoSweeps smoSweepTable{
    {{selectUpper<Groups::all>, selectUpper<Groups::bySign>},
     {selectUpper<Groups::byHalf>, selectUpper<Groups::byHalf>}},
    {{updateAndSelect<Groups::all>, updateAndSelect<Groups::bySign>},
     {updateAndSelect<Groups::byHalf>, updateAndSelect<Groups::byHalf>}},
    {{{selectLower<false, false, false>, selectLower<false, false, true>},
      {selectLower<false, true, false>, selectLower<false, true, true>}},
     {{selectLower<true, false, false>, selectLower<true, false, true>},
      {selectLower<true, true, false>, selectLower<true, true, true>}}},
};

}  // namespace zelsvm::ZEL_ISA
