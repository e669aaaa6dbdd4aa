#include "zeldplus/zelsvm/engine/smo_kernels.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "platform/host/parallel.h"
#include "platform/host/texture_view.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"
#include "zeldplus/zelsvm/engine/smo_rules.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// A reduction runs over at most this many chunks, cut the same way for any number of threads.
constexpr std::uint64_t maxChunks = 64;
constexpr double selectNanoseconds = 0.6;
constexpr double updateNanoseconds = 0.5;

std::uint64_t chunkSize(std::uint64_t count) {
  return std::max<std::uint64_t>(16384, (count + maxChunks - 1) / maxChunks);
}

SmoView deviceView(const unsigned* activeSet, std::uint64_t activeCount) {
  // The list ascends, so its last entry tells whether it names every variable up to there.
  const bool everyVariable = activeCount == 0 || activeSet[activeCount - 1] == activeCount - 1;
  return {zel::textureData<double>(zelsvm_tx_f),
          zel::textureData<double>(zelsvm_tx_alpha),
          zel::textureData<char2>(zelsvm_tx_ys),
          zel::textureData<double>(zelsvm_tx_norm),
          everyVariable ? nullptr : activeSet,
          zelsvm_Cp,
          zelsvm_Cn,
          zelsvm_N};
}

std::uint64_t sampleOf(std::uint64_t variable) {
  return variable < zelsvm_N ? variable : variable - zelsvm_N;
}

double upperBound(bool positive) { return positive ? zelsvm_Cp : zelsvm_Cn; }

// The earlier range keeps a tie.
void foldIn(SelectedUpper& best, const SelectedUpper& later) {
  if (later.up > best.up) {
    best.up = later.up;
    best.position = later.position;
  }
  best.low = std::min(best.low, later.low);
}

// Moves the pair's multipliers to their constrained optimum.
template <typename T>
SmoDelta<T> movePair(const SmoView& view, T* alpha, std::uint64_t i, std::uint64_t j,
                     double diagonalSum, double k) {
  const bool positiveI = view.status[i].y > 0;
  const bool positiveJ = view.status[j].y > 0;
  const bool sameSign = view.status[i].y == view.status[j].y;
  const double delta =
      pairStep(sameSign, view.gradient[i], view.gradient[j], pairCurvature(diagonalSum, k));
  const PairValues old{view.alpha[i], view.alpha[j]};
  const PairValues moved =
      clippedPair(sameSign, old, delta, {upperBound(positiveI), upperBound(positiveJ)});
  alpha[i] = moved.i;
  alpha[j] = moved.j;
  return {moved.i - old.i, moved.j - old.j};
}

}  // namespace

template <typename T>
void initSmoGradientKernel(T* G, const T* Q, unsigned ld, unsigned first, unsigned count,
                           unsigned l) {
  const SmoView view = deviceView(nullptr, 0);
  std::vector<double> weights(count);
  for (unsigned c = 0; c < count; ++c) {
    const double a = view.alpha[first + c];
    weights[c] = view.status[first + c].y > 0 ? a : -a;
  }
  zel::forEachChunk(l, chunkSize(l), updateNanoseconds * count,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      smoSweeps().addColumns(G, view.status, view.samples, Q, ld, weights.data(),
                                             count, begin, end);
                    });
}

template <typename T, bool nu>
void selectSmoWorkingSetKernel(SmoUpperBeta<T>* upper, unsigned* index, SmoUpperBeta<T>* upper2,
                               unsigned* index2, const unsigned* activeSet, unsigned activeCount) {
  const SmoView view = deviceView(activeSet, activeCount);
  const std::uint64_t grain = chunkSize(activeCount);
  std::array<SelectedUpper, 2 * maxChunks> partials;
  zel::forEachChunk(activeCount, grain, selectNanoseconds,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      const auto select = nu ? smoSweeps().selectUpperNu : smoSweeps().selectUpper;
                      select(view, begin, end, &partials[2 * (begin / grain)]);
                    });
  const auto reduce = [&](std::uint64_t cls, SmoUpperBeta<T>* beta, unsigned* chosen) {
    SelectedUpper best{-infinity, infinity, -1};
    for (std::uint64_t c = 0; c * grain < activeCount; ++c) foldIn(best, partials[2 * c + cls]);
    *beta = {best.up, best.low};
    *chosen = best.position < 0 ? noIndex : activeSet[best.position];
  };
  reduce(0, upper, index);
  if constexpr (nu) reduce(1, upper2, index2);
}

template <typename T, bool nu, bool unitDiagonal>
void findSmoDeltaKernel(SmoDelta<T>* delta, SmoLowerBeta<T>* lower, const SmoUpperBeta<T>* upper,
                        const unsigned* index, const SmoUpperBeta<T>* upper2,
                        const unsigned* index2, const T* row, const T* row2, T* alpha,
                        const unsigned* activeSet, unsigned activeCount) {
  const SmoView view = deviceView(activeSet, activeCount);
  const auto diagonal = [&](std::uint64_t t) {
    return unitDiagonal ? 1.0 : view.diagonal[sampleOf(t)];
  };
  const LowerQuery query{
      {upper->up, upper2->up}, {row, row2}, {diagonal(*index), diagonal(*index2)}};
  const std::uint64_t grain = chunkSize(activeCount);
  std::array<SelectedLower, maxChunks> partials;
  zel::forEachChunk(activeCount, grain, selectNanoseconds,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      partials[begin / grain] =
                          smoSweeps().selectLower[nu][unitDiagonal](view, query, begin, end);
                    });
  SelectedLower best{infinity, -1};
  for (std::uint64_t c = 0; c * grain < activeCount; ++c)
    if (partials[c].value < best.value) best = partials[c];
  if (best.position < 0) {
    *lower = {best.value, noIndex};
    *delta = {0, 0};
    return;
  }
  const unsigned j = activeSet[best.position];
  *lower = {best.value, j};
  const bool second = nu && view.status[j].y <= 0;
  const unsigned i = second ? *index2 : *index;
  const double k = (second ? row2 : row)[sampleOf(j)];
  *delta = movePair(view, alpha, i, j, diagonal(i) + diagonal(j), k);
}

template <typename T>
void updateSmoGradientKernel(T* G, const SmoDelta<T>* delta, unsigned i, const T* rowI, unsigned j,
                             const T* rowJ, unsigned l) {
  const SmoView view = deviceView(nullptr, 0);
  const GradientStep step{rowI, rowJ, view.status[i].y > 0 ? delta->deltaI : -delta->deltaI,
                          view.status[j].y > 0 ? delta->deltaJ : -delta->deltaJ};
  zel::forEachChunk(l, chunkSize(l), updateNanoseconds,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      smoSweeps().updateGradient(G, view.status, view.samples, step, begin, end);
                    });
}

template <typename T, bool nu>
void reduceSmoWorkingSetKernel(char2* status, T up, T up2, T low, T low2, const unsigned* activeSet,
                               unsigned activeCount) {
  const SmoView view = deviceView(activeSet, activeCount);
  for (unsigned q = 0; q < activeCount; ++q) {
    const unsigned t = activeSet[q];
    const bool positive = view.status[t].y > 0;
    const bool second = nu && !positive;
    if (isShrinkable(positive, view.alpha[t], upperBound(positive),
                     violation(positive, view.gradient[t]), second ? up2 : up, second ? low2 : low))
      status[t].x = 1;
  }
}

template void initSmoGradientKernel(double*, const double*, unsigned, unsigned, unsigned, unsigned);
template void selectSmoWorkingSetKernel<double, false>(SmoUpperBeta<double>*, unsigned*,
                                                       SmoUpperBeta<double>*, unsigned*,
                                                       const unsigned*, unsigned);
template void findSmoDeltaKernel<double, false, false>(SmoDelta<double>*, SmoLowerBeta<double>*,
                                                       const SmoUpperBeta<double>*, const unsigned*,
                                                       const SmoUpperBeta<double>*, const unsigned*,
                                                       const double*, const double*, double*,
                                                       const unsigned*, unsigned);
template void findSmoDeltaKernel<double, false, true>(SmoDelta<double>*, SmoLowerBeta<double>*,
                                                      const SmoUpperBeta<double>*, const unsigned*,
                                                      const SmoUpperBeta<double>*, const unsigned*,
                                                      const double*, const double*, double*,
                                                      const unsigned*, unsigned);
template void updateSmoGradientKernel(double*, const SmoDelta<double>*, unsigned, const double*,
                                      unsigned, const double*, unsigned);
template void reduceSmoWorkingSetKernel<double, false>(char2*, double, double, double, double,
                                                       const unsigned*, unsigned);
template void selectSmoWorkingSetKernel<double, true>(SmoUpperBeta<double>*, unsigned*,
                                                      SmoUpperBeta<double>*, unsigned*,
                                                      const unsigned*, unsigned);
template void findSmoDeltaKernel<double, true, false>(SmoDelta<double>*, SmoLowerBeta<double>*,
                                                      const SmoUpperBeta<double>*, const unsigned*,
                                                      const SmoUpperBeta<double>*, const unsigned*,
                                                      const double*, const double*, double*,
                                                      const unsigned*, unsigned);
template void findSmoDeltaKernel<double, true, true>(SmoDelta<double>*, SmoLowerBeta<double>*,
                                                     const SmoUpperBeta<double>*, const unsigned*,
                                                     const SmoUpperBeta<double>*, const unsigned*,
                                                     const double*, const double*, double*,
                                                     const unsigned*, unsigned);
template void reduceSmoWorkingSetKernel<double, true>(char2*, double, double, double, double,
                                                      const unsigned*, unsigned);

}  // namespace zelsvm::inline ZEL_PLATFORM
