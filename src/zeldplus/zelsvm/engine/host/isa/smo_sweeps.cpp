#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"

#include "zeldplus/zelsvm/engine/host/isa/lanes.h"
#include "zeldplus/zelsvm/engine/smo_rules.h"

namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA {
namespace {

constexpr double infinity = __builtin_inf();

// Running extremes of one class, lane by lane.
template <typename L>
struct UpperExtremes {
  typename L::Value up = L::all(-infinity);
  typename L::Value low = L::all(infinity);
  typename L::Position position = L::allPositions(-1);

  ZEL_RULE void take(typename L::Truth inUp, typename L::Truth inLow, typename L::Value v,
                     typename L::Position q) {
    const auto better = inUp & (v > up);
    up = better ? v : up;
    position = better ? q : position;
    low = (inLow & (v < low)) ? v : low;
  }
};

ZEL_RULE void mergeLane(UpperExtremes<Narrow>& into, double up, double low, std::int64_t position) {
  if (position >= 0 && (up > into.up || (up == into.up && position < into.position))) {
    into.up = up;
    into.position = position;
  }
  if (low < into.low) into.low = low;
}

template <typename L, bool nu, typename Access>
ZEL_RULE void takeUpper(const SmoView& view, const Access& access, std::uint64_t q,
                        UpperExtremes<L>* classes) {
  const auto positive = access.template positive<L>(view.status, q);
  const auto a = access.template values<L>(view.alpha, q);
  const auto v = violation(positive, access.template values<L>(view.gradient, q));
  const typename L::Value c = positive ? L::all(view.Cp) : L::all(view.Cn);
  const typename L::Truth inUp = inUpperSet(positive, a, c);
  const typename L::Truth inLow = inLowerSet(positive, a, c);
  const auto position = L::positionsFrom(q);
  if constexpr (nu) {
    const typename L::Truth none{};
    classes[0].take(positive ? inUp : none, positive ? inLow : none, v, position);
    classes[1].take(positive ? none : inUp, positive ? none : inLow, v, position);
  } else {
    classes[0].take(inUp, inLow, v, position);
  }
}

template <bool nu, typename Access>
ZEL_RULE void selectUpperRange(const SmoView& view, const Access& access, std::uint64_t begin,
                               std::uint64_t end, SelectedUpper* out) {
  constexpr int classCount = nu ? 2 : 1;
  UpperExtremes<Wide> wide[classCount];
  UpperExtremes<Narrow> narrow[classCount];
  std::uint64_t q = begin;
  for (; q + lanes <= end; q += lanes) takeUpper<Wide, nu>(view, access, q, wide);
  for (int c = 0; c < classCount; ++c)
    for (int k = 0; k < lanes; ++k)
      mergeLane(narrow[c], wide[c].up[k], wide[c].low[k], wide[c].position[k]);
  for (; q < end; ++q) takeUpper<Narrow, nu>(view, access, q, narrow);
  for (int c = 0; c < classCount; ++c) out[c] = {narrow[c].up, narrow[c].low, narrow[c].position};
}

template <bool nu>
void selectUpper(const SmoView& view, std::uint64_t begin, std::uint64_t end, SelectedUpper* out) {
  if (view.active == nullptr)
    selectUpperRange<nu>(view, EveryVariable{0}, begin, end, out);
  else
    selectUpperRange<nu>(view, ListedVariables{view.active, view.samples}, begin, end, out);
}

// Running minimum of the objective change, lane by lane.
template <typename L>
struct LowerMinimum {
  typename L::Value value = L::all(infinity);
  typename L::Position position = L::allPositions(-1);
};

template <typename L, bool nu, bool unitDiagonal, typename Access>
ZEL_RULE void takeLower(const SmoView& view, const LowerQuery& query, const Access& access,
                        std::uint64_t q, LowerMinimum<L>& best) {
  using Value = typename L::Value;
  const auto positive = access.template positive<L>(view.status, q);
  const auto a = access.template values<L>(view.alpha, q);
  const auto v = violation(positive, access.template values<L>(view.gradient, q));
  const Value c = positive ? L::all(view.Cp) : L::all(view.Cn);
  Value up = L::all(query.up[0]);
  Value k = access.template rowValues<L>(query.row[0], q);
  Value diagonal = L::all(unitDiagonal ? 1.0 : query.diagonal[0]);
  if constexpr (nu) {
    up = positive ? up : L::all(query.up[1]);
    k = positive ? k : access.template rowValues<L>(query.row[1], q);
    if constexpr (!unitDiagonal) diagonal = positive ? diagonal : L::all(query.diagonal[1]);
  }
  if constexpr (unitDiagonal)
    diagonal = diagonal + 1.0;
  else
    diagonal = diagonal + access.template rowValues<L>(view.diagonal, q);
  const Value b = up - v;
  const Value gain = pairGain(b, pairCurvature(diagonal, k));
  const auto better = inLowerSet(positive, a, c) & (b > 0.0) & (gain < best.value);
  best.value = better ? gain : best.value;
  best.position = better ? L::positionsFrom(q) : best.position;
}

template <bool nu, bool unitDiagonal, typename Access>
ZEL_RULE SelectedLower selectLowerRange(const SmoView& view, const LowerQuery& query,
                                        const Access& access, std::uint64_t begin,
                                        std::uint64_t end) {
  LowerMinimum<Wide> wide;
  LowerMinimum<Narrow> narrow;
  std::uint64_t q = begin;
  for (; q + lanes <= end; q += lanes)
    takeLower<Wide, nu, unitDiagonal>(view, query, access, q, wide);
  for (int k = 0; k < lanes; ++k) {
    const double value = wide.value[k];
    const std::int64_t position = wide.position[k];
    if (position >= 0 &&
        (value < narrow.value || (value == narrow.value && position < narrow.position)))
      narrow = {value, position};
  }
  for (; q < end; ++q) takeLower<Narrow, nu, unitDiagonal>(view, query, access, q, narrow);
  return {narrow.value, narrow.position};
}

// The two halves of a regression problem read the same kernel row entries: a range is cut where the
// second half begins.
template <bool nu, bool unitDiagonal>
SelectedLower selectLower(const SmoView& view, const LowerQuery& query, std::uint64_t begin,
                          std::uint64_t end) {
  if (view.active != nullptr)
    return selectLowerRange<nu, unitDiagonal>(
        view, query, ListedVariables{view.active, view.samples}, begin, end);
  const std::uint64_t cut = begin > view.samples ? begin : end < view.samples ? end : view.samples;
  const SelectedLower first =
      selectLowerRange<nu, unitDiagonal>(view, query, EveryVariable{0}, begin, cut);
  const SelectedLower second =
      selectLowerRange<nu, unitDiagonal>(view, query, EveryVariable{view.samples}, cut, end);
  return second.value < first.value ? second : first;
}

void updateGradient(double* gradient, const char2* status, std::uint64_t samples,
                    const GradientStep& step, std::uint64_t begin, std::uint64_t end) {
  const auto update = [&](std::uint64_t from, std::uint64_t to, std::uint64_t shift) {
#pragma omp simd
    for (std::uint64_t k = from; k < to; ++k)
      gradient[k] = updatedGradient(gradient[k], signOf(status, k), step.stepI,
                                    step.rowI[k - shift], step.stepJ, step.rowJ[k - shift]);
  };
  const std::uint64_t cut = begin > samples ? begin : end < samples ? end : samples;
  update(begin, cut, 0);
  update(cut, end, samples);
}

void addColumns(double* gradient, const char2* status, std::uint64_t samples, const double* columns,
                std::uint64_t ld, const double* weights, std::uint64_t count, std::uint64_t begin,
                std::uint64_t end) {
  constexpr std::uint64_t stretch = 512;
  for (std::uint64_t from = begin; from < end;) {
    const std::uint64_t bound = from < samples && samples < end ? samples : end;
    const std::uint64_t to = bound - from < stretch ? bound : from + stretch;
    const double* const first = columns + (from < samples ? from : from - samples);
    double sums[stretch] = {};
    for (std::uint64_t c = 0; c < count; ++c) {
      const double* const column = first + c * ld;
      const double weight = weights[c];
#pragma omp simd
      for (std::uint64_t k = 0; k < to - from; ++k)
        sums[k] = fusedMultiplyAdd(column[k], weight, sums[k]);
    }
#pragma omp simd
    for (std::uint64_t k = 0; k < to - from; ++k)
      gradient[from + k] += signOf(status, from + k) * sums[k];
    from = to;
  }
}

}  // namespace

extern const SmoSweeps smoSweepTable;
const SmoSweeps smoSweepTable{
    selectUpper<false>,
    selectUpper<true>,
    {{selectLower<false, false>, selectLower<false, true>},
     {selectLower<true, false>, selectLower<true, true>}},
    updateGradient,
    addColumns,
};

}  // namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA
