#include "zeldplus/zelsvm/engine/smo_steps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/host/parallel.h"
#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/host/lookahead.h"
#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"
#include "zeldplus/zelsvm/engine/smo_rules.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Threads share a sweep in at most this many chunks of at least so many samples. A chunk per thread
// is best: each starts its selection anew.
constexpr std::uint64_t maxChunks = 64;
constexpr std::uint64_t leastChunk = 1024;
constexpr double sweepNanoseconds = 0.5;

constexpr std::uint64_t padded(std::uint64_t count) {
  return (count + sweepStep - 1) / sweepStep * sweepStep;
}

// What one chunk has found, by half or else by class.
struct UpperPartial {
  SelectedUpper best[2];
};
struct LowerPartial {
  SelectedLower best[2];
};

constexpr SelectedUpper noUpper{-infinity, infinity, -1};
constexpr UpperPartial nothingUpper{{noUpper, noUpper}};
constexpr LowerPartial nothingLower{{{-infinity, -1}, {-infinity, -1}}};

// What the sweeps read is compact: v = -y times the gradient, and a byte for what the selections
// want to know, padded, and for a regression each half's states apart from the other's. A gradient
// update selects the next first index in the same pass.
template <bool nu>
class HostSmoSteps : public SmoSteps<double> {
 public:
  explicit HostSmoSteps(SVM_KERNEL kernelType) : unitDiagonal(kernelType == SVM_KERNEL_RADIAL) {}

  void begin(const SmoVariables<double>& variables) override {
    all = variables;
    halves = all.count > all.samples ? 2 : 1;
    stride = padded(all.samples);
    grain = chunkLength();
    chunks = (stride + grain - 1) / grain;
    v.resize(stride);
    states.resize(halves * stride);
    std::fill_n(v.data(), stride, 0.0);
    const double offset = halves == 1 ? 0 : halfDistance();
    swept = {v.data(), {states.data(), states.data() + (halves - 1) * stride}, {-offset, offset}};
    for (unsigned t = 0; t < all.samples; ++t)
      v.data()[t] = violation(isPositive(t), all.gradient[t]) - offsetOf(t);
    selected = false;
    moved = false;
  }

  void addColumns(const double* columns, std::uint64_t ld, unsigned first,
                  unsigned count) override {
    std::vector<double> weights(count);
    for (unsigned c = 0; c < count; ++c)
      weights[c] = isPositive(first + c) ? all.alpha[first + c] : -all.alpha[first + c];
    zel::forEachChunk(
        stride, grain, sweepNanoseconds * count, [&](std::uint64_t begin, std::uint64_t end) {
          smoSweeps().addColumns(v.data(), columns, ld, weights.data(), count, begin, end);
        });
    selected = false;
  }

  void activate(unsigned activeCount) override {
    active = activeCount;
    std::fill_n(states.data(), halves * stride, SmoState{0});
    for (unsigned q = 0; q < active; ++q) refreshState(all.activeSet[q]);
    selected = false;
  }

  void select(SmoSelection<double>& selection, SmoSelection<double>& second) override {
    if (!selected)
      sweepUpper([this](std::uint64_t begin, std::uint64_t end, SelectedUpper* best) {
        smoSweeps().selectUpper[halves - 1][nu](swept, begin, end, best);
      });
    selection = chosen[0];
    second = chosen[nu ? 1 : 0];
  }

  unsigned findDelta(const SmoSelection<double>& selection, const SmoSelection<double>& second,
                     const double* row, const double* row2) override {
    const LowerQuery query{{selection.beta.up, second.beta.up},
                           {row, row2},
                           {diagonal(selection.index), diagonal(second.index)},
                           all.diagonal};
    const unsigned j = sweepLower(query);
    if (j == noIndex) {
      *all.delta = {0, 0};
      return j;
    }
    const bool other = nu && !isPositive(j);
    const unsigned i = other ? second.index : selection.index;
    movePair(i, j, (other ? row2 : row)[sampleOf(j)]);
    return j;
  }

  void updateGradient(const SmoPair<double>& pair) override {
    const GradientStep step{pair.rowI, pair.rowJ, pending.stepI, pending.stepJ};
    moved = false;
    sweepUpper([&](std::uint64_t begin, std::uint64_t end, SelectedUpper* best) {
      smoSweeps().updateAndSelect[halves - 1][nu](swept, step, begin, end, best);
    });
  }

  void reduce(const SmoSelection<double>& selection, const SmoSelection<double>& second) override {
    for (unsigned q = 0; q < active; ++q) {
      const unsigned t = all.activeSet[q];
      const SmoUpperBeta<double>& beta = nu && !isPositive(t) ? second.beta : selection.beta;
      if (isShrinkable(isPositive(t), all.alpha[t], upperBound(t), valueOf(t), beta.up, beta.low))
        all.status[t].x = 1;
    }
  }

  void storeGradient() override {
    for (unsigned t = 0; t < all.count; ++t) all.gradient[t] = violation(isPositive(t), valueOf(t));
  }

  void likelySamples(std::vector<std::uint64_t>& samples, unsigned most,
                     const std::vector<std::uint32_t>& isKnown, PairKernel& kernel) override {
    lookahead.forecast(samples, most, isKnown, kernel,
                       {swept, all.alpha, unitDiagonal ? nullptr : all.diagonal, all.Cp, all.Cn,
                        all.samples, halves, nu},
                       moved ? &pending : nullptr);
  }

 private:
  [[nodiscard]] bool isPositive(unsigned t) const { return all.status[t].y > 0; }
  [[nodiscard]] double upperBound(unsigned t) const { return isPositive(t) ? all.Cp : all.Cn; }
  [[nodiscard]] std::uint64_t sampleOf(unsigned t) const {
    return t < all.samples ? t : t - all.samples;
  }
  [[nodiscard]] SmoState& stateOf(unsigned t) {
    return states.data()[t < all.samples ? t : stride + (t - all.samples)];
  }
  [[nodiscard]] double offsetOf(unsigned t) const { return swept.offset[t < all.samples ? 0 : 1]; }
  [[nodiscard]] double valueOf(unsigned t) const { return swept.v[sampleOf(t)] + offsetOf(t); }
  [[nodiscard]] unsigned variableAt(unsigned half, std::int64_t position) const {
    return static_cast<unsigned>(half * all.samples + static_cast<std::uint64_t>(position));
  }
  [[nodiscard]] double diagonal(unsigned t) const {
    return unitDiagonal ? 1.0 : all.diagonal[sampleOf(t)];
  }
  [[nodiscard]] std::uint64_t chunkLength() const {
    const double nanoseconds = sweepNanoseconds * static_cast<double>(halves * stride);
    if (!zel::isWorthThreads(nanoseconds)) return stride;
    const auto parts =
        std::min<std::uint64_t>(static_cast<unsigned>(zel::threadCount()), maxChunks);
    return padded(std::max(leastChunk, (stride + parts - 1) / parts));
  }

  // Half of what a regression's second half has more in v: the sum of a sample's two gradients,
  // from where rounding has taken least of it.
  [[nodiscard]] double halfDistance() const {
    const auto sizeAt = [this](unsigned t) { return std::abs(all.gradient[t]); };
    unsigned best = 0;
    for (unsigned t = 1; t < all.samples; ++t)
      if (sizeAt(t) < sizeAt(best)) best = t;
    return (all.gradient[best] + all.gradient[best + all.samples]) / 2;
  }

  void refreshState(unsigned t) {
    const bool positive = isPositive(t);
    const double a = all.alpha[t];
    const double c = upperBound(t);
    stateOf(t) = static_cast<SmoState>((inUpperSet(positive, a, c) ? inUpperBit : 0) |
                                       (inLowerSet(positive, a, c) ? inLowerBit : 0) |
                                       (positive ? positiveBit : 0));
  }

  // Calls sweep(begin, end, best) for all variables and keeps what it selects.
  template <typename Sweep>
  void sweepUpper(const Sweep& sweep) {
    std::array<UpperPartial, maxChunks> partials;
    std::fill_n(partials.begin(), chunks, nothingUpper);
    forEachChunk([&](std::uint64_t chunk, std::uint64_t begin, std::uint64_t end) {
      sweep(begin, end, partials[chunk].best);
    });
    constexpr unsigned classes = nu ? 2 : 1;
    std::fill_n(chosen, classes, SmoSelection<double>{noIndex, {-infinity, infinity}});
    for (unsigned part = 0; part < std::max(halves, classes); ++part) {
      auto& [index, beta] = chosen[nu ? part : 0];
      for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) {
        const SelectedUpper& partial = partials[chunk].best[part];
        if (partial.up > beta.up) {
          beta.up = partial.up;
          index = variableAt(halves == 2 ? part : 0, partial.position);
        }
        beta.low = std::min(beta.low, partial.low);
      }
    }
    selected = true;
  }

  [[nodiscard]] unsigned sweepLower(const LowerQuery& query) const {
    std::array<LowerPartial, maxChunks> partials;
    std::fill_n(partials.begin(), chunks, nothingLower);
    forEachChunk([&](std::uint64_t chunk, std::uint64_t begin, std::uint64_t end) {
      smoSweeps().selectLower[halves - 1][nu][unitDiagonal](swept, query, begin, end,
                                                            partials[chunk].best);
    });
    double gain = -infinity;
    unsigned j = noIndex;
    for (unsigned half = 0; half < halves; ++half)
      for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) {
        const SelectedLower& partial = partials[chunk].best[half];
        if (!(partial.gain > gain)) continue;
        gain = partial.gain;
        j = variableAt(half, partial.position);
      }
    return j;
  }

  // Calls body(chunk, begin, end).
  template <typename Body>
  void forEachChunk(const Body& body) const {
    zel::forEachChunk(
        stride, grain, sweepNanoseconds * halves,
        [&](std::uint64_t begin, std::uint64_t end) { body(begin / grain, begin, end); });
  }

  // Moves the pair's multipliers to their constrained optimum.
  void movePair(unsigned i, unsigned j, double k) {
    const bool sameSign = isPositive(i) == isPositive(j);
    const double gradientI = violation(isPositive(i), valueOf(i));
    const double gradientJ = violation(isPositive(j), valueOf(j));
    const double delta =
        pairStep(sameSign, gradientI, gradientJ, pairCurvature(diagonal(i) + diagonal(j), k));
    const PairValues old{all.alpha[i], all.alpha[j]};
    const PairValues next = clippedPair(sameSign, old, delta, {upperBound(i), upperBound(j)});
    all.alpha[i] = next.i;
    all.alpha[j] = next.j;
    *all.delta = {next.i - old.i, next.j - old.j};
    pending = {i, j, isPositive(i) ? all.delta->deltaI : -all.delta->deltaI,
               isPositive(j) ? all.delta->deltaJ : -all.delta->deltaJ};
    moved = true;
    refreshState(i);
    refreshState(j);
  }

  SmoVariables<double> all{};
  bool unitDiagonal;
  unsigned halves = 1;
  unsigned active = 0;
  std::uint64_t stride = 0;  // from one half to the next
  std::uint64_t grain = 0;   // of a half, in a chunk
  std::uint64_t chunks = 0;
  double offset = 0;  // of v, added in the second half and taken off in the first
  zel::DeviceVector<double> v;
  zel::DeviceVector<SmoState> states;
  SweptVariables swept{};
  bool selected = false;
  SmoSelection<double> chosen[2]{};
  bool moved = false;  // the pending step is not yet in v
  PendingStep pending{};
  Lookahead lookahead;
};

}  // namespace

template <>
std::unique_ptr<SmoSteps<double>> makeSmoSteps(SVM_KERNEL kernelType, bool nu) {
  if (nu) return std::make_unique<HostSmoSteps<true>>(kernelType);
  return std::make_unique<HostSmoSteps<false>>(kernelType);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
