#include "platform/host/sweeps/smo_sweeps.h"

#include "platform/host/isa/pack.h"
#include "rules/smo_rules.h"

namespace zelsvm::ZEL_ISA {
namespace {

constexpr double infinity = __builtin_inf();
// Variables whose maximum is taken before anyone asks where it lies.
constexpr std::uint64_t blockSize = 256;

// Kernel rows come from far away, once each; everything else stays in the second-level cache.
constexpr std::uint64_t fetchedAhead = 512;
constexpr std::uint64_t line = 8;  // elements

ZEL_RULE void fetch(const double* row) { __builtin_prefetch(row + fetchedAhead); }

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

// A state byte per lane; the sign of a shifted mask tells one bit of it.
struct States {
  Mask bytes;
  ZEL_RULE Mask inUpper() const { return bytes; }
  ZEL_RULE Mask inLower() const { return bytes << 57; }
  ZEL_RULE Mask positive() const { return bytes << 63; }
};

ZEL_RULE Pack where(Mask sign, Pack a, Pack b) { return sign < 0 ? a : b; }

// Running extremes of one group in one block, lane by lane. What is not a number never wins.
template <int unroll>
struct Extremes {
  Pack up[unroll];
  Pack low[unroll];

  ZEL_RULE Extremes() {
    for (int u = 0; u < unroll; ++u) {
      up[u] = splat(-infinity);
      low[u] = splat(infinity);
    }
  }
  ZEL_RULE void take(int u, Mask inUpper, Mask inLower, Pack v) {
    const Pack candidate = where(inUpper, v, splat(-infinity));
    const Pack lowest = where(inLower, v, splat(infinity));
    up[u] = larger(candidate, up[u]);
    low[u] = smaller(lowest, low[u]);
  }
  ZEL_RULE double highest() const {
    Pack m = up[0];
    for (int u = 1; u < unroll; ++u) m = larger(up[u], m);
    double best = m[0];
    for (int k = 1; k < lanes; ++k) best = m[k] > best ? m[k] : best;
    return best;
  }
  ZEL_RULE Pack lowest(Pack m) const {
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

  ZEL_RULE Group(const SweptVariables& variables, int index)
      : states(variables.states[groups == Groups::byHalf ? index : 0]),
        offset(splat(variables.offset[groups == Groups::byHalf ? index : 0])),
        index(index) {}

  ZEL_RULE Pack value(Pack v) const { return groups == Groups::byHalf ? v + offset : v; }
  ZEL_RULE Mask members(const States& s, Mask membership) const {
    if constexpr (groups != Groups::bySign) return membership;
    return index == 0 ? membership & s.positive() : membership & ~s.positive();
  }
  ZEL_RULE States statesAt(std::uint64_t q) const { return {loadBytes(states + q)}; }

  // First position from here where a member of the upper set has this value.
  ZEL_RULE std::uint64_t firstWith(const double* v, std::uint64_t from, double wanted) const {
    for (std::uint64_t k = from;; k += lanes) {
      const States s = statesAt(k);
      const Mask found = members(s, s.inUpper()) & (value(load(v + k)) == splat(wanted));
      if (const unsigned bits = signBits(found); bits != 0)
        return k + static_cast<std::uint64_t>(__builtin_ctz(bits));
    }
  }
};

template <Groups groups, typename Update>
ZEL_RULE void selectRange(const SweptVariables& variables, std::uint64_t begin, std::uint64_t end,
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
        const std::uint64_t q = k + static_cast<std::uint64_t>(u * lanes);
        const Pack v = update(q);
        for (int g = 0; g < count; ++g) {
          const Group<groups>& group = members[g];
          const States s = group.statesAt(q);
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
    for (int k = 0; k < lanes; ++k) best[g].low = low[g][k] < best[g].low ? low[g][k] : best[g].low;
  }
}

template <Groups groups>
void selectUpper(const SweptVariables& variables, std::uint64_t begin, std::uint64_t end,
                 SelectedUpper* best) {
  const double* const v = variables.v;
  selectRange<groups>(
      variables, begin, end, [v](std::uint64_t q) { return load(v + q); }, best);
}

template <Groups groups>
void updateAndSelect(const SweptVariables& variables, const GradientStep& step, std::uint64_t begin,
                     std::uint64_t end, SelectedUpper* best) {
  const Pack stepI = splat(step.stepI);
  const Pack stepJ = splat(step.stepJ);
  const double* const rowI = step.rowI;
  const double* const rowJ = step.rowJ;
  double* const v = variables.v;
  const auto update = [=](std::uint64_t q) {
    if (q % line == 0) {
      fetch(rowI + q);
      fetch(rowJ + q);
    }
    const Pack moved = load(v + q) - multiplyAdd(stepI, load(rowI + q), load(rowJ + q) * stepJ);
    store(v + q, moved);
    return moved;
  };
  selectRange<groups>(variables, begin, end, update, best);
}

// The best pair so far. Candidates that may be better are rare, so only these are looked at
// closely: the test takes a curvature that is not positive for a tiny one, and its factor keeps
// rounding from losing one.
struct GainTest {
  Pack threshold;

  ZEL_RULE explicit GainTest(double best) { raise(best); }
  ZEL_RULE void raise(double best) { threshold = splat(best * (1 - 0x1p-50)); }
  // What the square of a difference in v is to exceed.
  ZEL_RULE Pack leastSquare(Pack diagonalSum, Pack k) const {
    const Pack q = multiplyAdd(k, splat(-2), diagonalSum);
    return larger(q, splat(0x1p-1022)) * threshold;
  }
};

// The search for the second index.
template <bool halves, bool nu, bool unitDiagonal>
struct LowerSearch {
  static constexpr int count = halves ? 2 : 1;
  static constexpr int together = unroll<Groups::all> / count;
  static constexpr std::uint64_t step = std::uint64_t{together} * lanes;

  const SweptVariables variables;
  const LowerQuery query;

  ZEL_RULE static double most(const SelectedLower* best) {
    return best[0].gain > best[count - 1].gain ? best[0].gain : best[count - 1].gain;
  }

  // What a variable of this sign and half is paired with.
  ZEL_RULE static int classOf(bool positive, int half) {
    if constexpr (!nu) return 0;
    return (halves ? half == 0 : positive) ? 0 : 1;
  }

  // The lanes, by sign, that may be better.
  ZEL_RULE Mask lanesAt(std::uint64_t q, int half, const GainTest& test) const {
    const States s{loadBytes(variables.states[half] + q)};
    const int cls = halves && nu ? half : 0;
    Pack up = splat(query.up[cls]);
    if constexpr (nu && !halves) up = where(s.positive(), up, splat(query.up[1]));
    const Pack v = load(variables.v + q);
    const Pack b = up - (halves ? v + splat(variables.offset[half]) : v);
    const Pack least = test.leastSquare(diagonalSums(q, cls, s), kernelValues(q, cls, s));
    return s.inLower() & ~reinterpret_cast<Mask>(b) & (b * b > least);
  }

  ZEL_RULE Pack kernelValues(std::uint64_t q, int cls, const States& s) const {
    const Pack k = load(query.row[cls] + q);
    if constexpr (nu && !halves) return where(s.positive(), k, load(query.row[1] + q));
    return k;
  }
  ZEL_RULE Pack diagonalSums(std::uint64_t q, int cls, const States& s) const {
    if constexpr (unitDiagonal) return splat(2);
    Pack diagonal = splat(query.diagonal[cls]);
    if constexpr (nu && !halves) diagonal = where(s.positive(), diagonal, splat(query.diagonal[1]));
    return diagonal + load(query.diagonals + q);
  }

  // Minus infinity for none.
  ZEL_RULE double gainAt(std::uint64_t q, int half) const {
    const int cls = classOf((variables.states[half][q] & positiveBit) != 0, half);
    const double v = variables.v[q];
    const double b = query.up[cls] - (halves ? v + variables.offset[half] : v);
    const double diagonals = unitDiagonal ? 2 : query.diagonal[cls] + query.diagonals[q];
    return b > 0 ? -pairGain(b, pairCurvature(diagonals, query.row[cls][q])) : -infinity;
  }

  void run(std::uint64_t begin, std::uint64_t end, SelectedLower* best) const {
    GainTest test(most(best));
    for (std::uint64_t k = begin; k < end; k += step) {
      for (std::uint64_t q = k; q < k + step; q += line)
        for (int row = 0; row < (nu ? 2 : 1); ++row) fetch(query.row[row] + q);
      Mask any{};
      for (int u = 0; u < together; ++u)
        for (int half = 0; half < count; ++half)
          any |= lanesAt(k + static_cast<std::uint64_t>(u * lanes), half, test);
      if (signBits(any) == 0) continue;
      for (int u = 0; u < together; ++u)
        for (int half = 0; half < count; ++half)
          choose(k + static_cast<std::uint64_t>(u * lanes), half, test, best);
    }
  }

  // Those of a pack that beat the best of their half become it, the first of equals.
  ZEL_RULE void choose(std::uint64_t q, int half, GainTest& test, SelectedLower* best) const {
    for (unsigned bits = signBits(lanesAt(q, half, test)); bits != 0; bits &= bits - 1) {
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

void addColumns(double* v, const double* columns, std::uint64_t ld, const double* weights,
                std::uint64_t count, std::uint64_t begin, std::uint64_t end) {
  constexpr std::uint64_t stretch = 512;
  for (std::uint64_t from = begin; from < end; from += stretch) {
    const std::uint64_t length = end - from < stretch ? end - from : stretch;
    double sums[stretch] = {};
    for (std::uint64_t c = 0; c < count; ++c) {
      const double* const column = columns + from + c * ld;
      const double weight = weights[c];
#pragma omp simd
      for (std::uint64_t k = 0; k < length; ++k)
        sums[k] = fusedMultiplyAdd(column[k], weight, sums[k]);
    }
#pragma omp simd
    for (std::uint64_t k = 0; k < length; ++k) v[from + k] -= sums[k];
  }
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
    addColumns,
};

}  // namespace zelsvm::ZEL_ISA
