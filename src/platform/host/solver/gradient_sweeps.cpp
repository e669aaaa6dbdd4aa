#include "platform/host/solver/gradient_sweeps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "rules/smo_rules.h"
#include "threads/parallel.h"

namespace zelsvm {
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

// A regression's second half has more in v than the first, by the sum of a sample's two gradients;
// half of that, from the sample where rounding has taken least of it.
double halfDistance(std::span<const double> gradient) {
  const std::size_t samples = gradient.size() / 2;
  std::size_t best = 0;
  for (std::size_t t = 1; t < samples; ++t)
    if (std::abs(gradient[t]) < std::abs(gradient[best])) best = t;
  return (gradient[best] + gradient[best + samples]) / 2;
}

}  // namespace

void GradientSweeps::assign(std::uint64_t newSamples, std::span<const signed char> signs,
                            std::span<const double> gradient) {
  samples = newSamples;
  halves = gradient.size() > samples ? 2 : 1;
  stride = padded(samples);
  grain = chunkLength();
  chunks = (stride + grain - 1) / grain;
  v.resize(stride);
  states.resize(halves * stride);
  std::fill_n(v.data(), stride, 0.0);
  const double offset = halves == 1 ? 0 : halfDistance(gradient);
  swept = {v.data(), {states.data(), states.data() + (halves - 1) * stride}, {-offset, offset}};
  for (unsigned t = 0; t < samples; ++t)
    v.data()[t] = violation(signs[t] > 0, gradient[t]) - offsetOf(t);
  selected = false;
}

std::uint64_t GradientSweeps::chunkLength() const {
  const double nanoseconds = sweepNanoseconds * static_cast<double>(halves * stride);
  if (!zel::isWorthThreads(nanoseconds)) return stride;
  const auto parts = std::min<std::uint64_t>(static_cast<unsigned>(zel::threadCount()), maxChunks);
  return padded(std::max(leastChunk, (stride + parts - 1) / parts));
}

// Calls body(chunk, begin, end).
template <typename Body>
void GradientSweeps::forEachChunk(const Body& body) const {
  zel::forEachChunk(
      stride, grain, sweepNanoseconds * halves,
      [&](std::uint64_t begin, std::uint64_t end) { body(begin / grain, begin, end); });
}

void GradientSweeps::clearStates() {
  std::fill_n(states.data(), halves * stride, SmoState{0});
  selected = false;
}

void GradientSweeps::setState(unsigned variable, SmoState state) {
  states.data()[variable < samples ? variable : stride + (variable - samples)] = state;
}

void GradientSweeps::select(SmoSelection<double>& selection, SmoSelection<double>& second) {
  if (!selected)
    sweepUpper([this](std::uint64_t begin, std::uint64_t end, SelectedUpper* best) {
      smoSweeps().selectUpper[halves - 1][nu](swept, begin, end, best);
    });
  selection = chosen[0];
  second = chosen[nu ? 1 : 0];
}

void GradientSweeps::update(const GradientStep& step) {
  sweepUpper([&](std::uint64_t begin, std::uint64_t end, SelectedUpper* best) {
    smoSweeps().updateAndSelect[halves - 1][nu](swept, step, begin, end, best);
  });
}

// Calls sweep(begin, end, best) for all variables and keeps what it selects.
template <typename Sweep>
void GradientSweeps::sweepUpper(const Sweep& sweep) {
  std::array<UpperPartial, maxChunks> partials;
  std::fill_n(partials.begin(), chunks, nothingUpper);
  forEachChunk([&](std::uint64_t chunk, std::uint64_t begin, std::uint64_t end) {
    sweep(begin, end, partials[chunk].best);
  });
  const unsigned classes = nu ? 2 : 1;
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

unsigned GradientSweeps::selectSecond(const LowerQuery& query) const {
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

}  // namespace zelsvm
