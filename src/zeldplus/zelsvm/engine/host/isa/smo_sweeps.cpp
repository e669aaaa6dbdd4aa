#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"

#include "zeldplus/zelsvm/engine/host/isa/pack.h"
#include "zeldplus/zelsvm/engine/smo_rules.h"

namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA {
namespace {

constexpr double infinity = __builtin_inf();
// Variables whose maximum is taken before anyone asks where it lies.
constexpr std::uint64_t blockSize = 256;
// Packs handled together, so that running extremes do not wait for one another.
constexpr int unroll = lanes < 8 ? 4 : 2;
constexpr std::uint64_t unrolled = std::uint64_t{unroll} * lanes;
static_assert(sweepStep % unrolled == 0 && blockSize % sweepStep == 0);

// A state byte per lane; the sign of a shifted mask tells one bit of it.
struct States {
  Mask bytes;
  ZEL_RULE Mask inUpper() const { return bytes; }
  ZEL_RULE Mask inLower() const { return bytes << 1; }
  ZEL_RULE Mask positive() const { return bytes << 7; }
};

ZEL_RULE Pack where(Mask sign, Pack a, Pack b) { return sign < 0 ? a : b; }

// Running extremes of one class in one block, lane by lane. What is not a number never wins.
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
    up[u] = candidate > up[u] ? candidate : up[u];
    low[u] = lowest < low[u] ? lowest : low[u];
  }
  ZEL_RULE double highest() const {
    Pack m = up[0];
    for (int u = 1; u < unroll; ++u) m = up[u] > m ? up[u] : m;
    double best = m[0];
    for (int k = 1; k < lanes; ++k) best = m[k] > best ? m[k] : best;
    return best;
  }
  ZEL_RULE Pack lowest(Pack m) const {
    for (const Pack& l : low) m = l < m ? l : m;
    return m;
  }
};

template <bool nu>
ZEL_RULE Mask ofClass(int cls, const States& s, Mask membership) {
  if constexpr (!nu) return membership;
  return cls == 0 ? membership & s.positive() : membership & ~s.positive();
}

// First position of the block where a member of the class's upper set has this value.
template <bool nu>
ZEL_RULE std::uint64_t firstWith(const double* v, const SmoState* states, std::uint64_t from,
                                 int cls, double value) {
  for (std::uint64_t k = from;; k += lanes) {
    const States s{loadBytes(states + k)};
    const Mask found = ofClass<nu>(cls, s, s.inUpper()) & (load(v + k) == splat(value));
    if (const unsigned bits = signBits(found); bits != 0)
      return k + static_cast<std::uint64_t>(__builtin_ctz(bits));
  }
}

template <bool nu, typename Update>
ZEL_RULE void selectRange(const double* v, const SmoState* states, std::uint64_t begin,
                          std::uint64_t end, const Update& update, SelectedUpper* best) {
  constexpr int classes = nu ? 2 : 1;
  std::uint64_t bestBlock[classes];
  bool better[classes] = {};
  Pack low[classes];
  for (Pack& l : low) l = splat(infinity);
  for (std::uint64_t from = begin; from < end; from += blockSize) {
    const std::uint64_t to = end - from < blockSize ? end : from + blockSize;
    Extremes extremes[classes];
    for (std::uint64_t k = from; k < to; k += unrolled)
      for (int u = 0; u < unroll; ++u) {
        const std::uint64_t q = k + static_cast<std::uint64_t>(u * lanes);
        const Pack value = update(q);
        const States s{loadBytes(states + q)};
        for (int c = 0; c < classes; ++c)
          extremes[c].take(u, ofClass<nu>(c, s, s.inUpper()), ofClass<nu>(c, s, s.inLower()),
                           value);
      }
    for (int c = 0; c < classes; ++c) {
      low[c] = extremes[c].lowest(low[c]);
      const double highest = extremes[c].highest();
      if (!(highest > best[c].up)) continue;
      best[c].up = highest;
      bestBlock[c] = from;
      better[c] = true;
    }
  }
  for (int c = 0; c < classes; ++c) {
    if (better[c])
      best[c].position =
          static_cast<std::int64_t>(firstWith<nu>(v, states, bestBlock[c], c, best[c].up));
    for (int k = 0; k < lanes; ++k) best[c].low = low[c][k] < best[c].low ? low[c][k] : best[c].low;
  }
}

template <bool nu>
void selectUpper(const double* v, const SmoState* states, std::uint64_t begin, std::uint64_t end,
                 SelectedUpper* best) {
  selectRange<nu>(
      v, states, begin, end, [v](std::uint64_t q) { return load(v + q); }, best);
}

template <bool nu>
void updateAndSelect(double* v, const SmoState* states, const GradientStep& step,
                     std::uint64_t begin, std::uint64_t end, SelectedUpper* best) {
  const Pack stepI = splat(step.stepI);
  const Pack stepJ = splat(step.stepJ);
  const double* const rowI = step.rowI;
  const double* const rowJ = step.rowJ;
  const auto update = [=](std::uint64_t q) {
    const Pack moved = load(v + q) - multiplyAdd(stepI, load(rowI + q), load(rowJ + q) * stepJ);
    store(v + q, moved);
    return moved;
  };
  selectRange<nu>(v, states, begin, end, update, best);
}

// What the gain of a pair is made of, lane by lane.
struct Candidates {
  Pack b;
  Pack curvature;
  Mask eligible;
};

template <bool nu, bool unitDiagonal>
ZEL_RULE Candidates candidatesAt(const double* v, const SmoState* states, const LowerQuery& query,
                                 std::uint64_t q) {
  const States s{loadBytes(states + q)};
  Pack up = splat(query.up[0]);
  Pack k = load(query.row[0] + q);
  Pack diagonal = splat(unitDiagonal ? 2.0 : query.diagonal[0]);
  if constexpr (nu) {
    up = where(s.positive(), up, splat(query.up[1]));
    k = where(s.positive(), k, load(query.row[1] + q));
    if constexpr (!unitDiagonal) diagonal = where(s.positive(), diagonal, splat(query.diagonal[1]));
  }
  if constexpr (!unitDiagonal) diagonal += load(query.diagonals + q);
  const Pack b = up - load(v + q);
  return {b, pairCurvature(diagonal, k), s.inLower() & (b > 0.0)};
}

// Candidates that may be better are rare, so only these are divided. The factor keeps rounding from
// losing one.
struct GainTest {
  double gain;
  Pack threshold;

  ZEL_RULE explicit GainTest(double best) { raise(best); }
  ZEL_RULE void raise(double best) {
    gain = best;
    threshold = splat(best * (1 - 0x1p-50));
  }
  ZEL_RULE Mask passes(const Candidates& c) const {
    return c.eligible & (c.b * c.b > threshold * c.curvature);
  }
};

template <bool nu, bool unitDiagonal>
void selectLower(const double* v, const SmoState* states, const LowerQuery& query,
                 std::uint64_t begin, std::uint64_t end, SelectedLower* best) {
  GainTest test(best->gain);
  for (std::uint64_t k = begin; k < end; k += unrolled) {
    Candidates candidates[unroll];
    Mask any{};
    for (int u = 0; u < unroll; ++u) {
      candidates[u] = candidatesAt<nu, unitDiagonal>(v, states, query,
                                                     k + static_cast<std::uint64_t>(u * lanes));
      any |= test.passes(candidates[u]);
    }
    if (signBits(any) == 0) continue;
    for (int u = 0; u < unroll; ++u)
      for (unsigned bits = signBits(test.passes(candidates[u])); bits != 0; bits &= bits - 1) {
        const int lane = __builtin_ctz(bits);
        const double gain = -pairGain(candidates[u].b[lane], candidates[u].curvature[lane]);
        if (!(gain > test.gain)) continue;
        test.raise(gain);
        best->position = static_cast<std::int64_t>(k) + static_cast<std::int64_t>(u * lanes + lane);
      }
  }
  best->gain = test.gain;
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
    {selectUpper<false>, selectUpper<true>},
    {updateAndSelect<false>, updateAndSelect<true>},
    {{selectLower<false, false>, selectLower<false, true>},
     {selectLower<true, false>, selectLower<true, true>}},
    addColumns,
};

}  // namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA
