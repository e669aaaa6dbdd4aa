#include "platform/host/host_sigmoid_sums.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "platform/host/sweeps/sigmoid_sweeps.h"
#include "rules/sigmoid_rules.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Cut the same way for any number of threads.
constexpr std::uint64_t maxChunks = 64;
constexpr double nanosecondsPerSample = 5;

class HostSigmoidSums : public SigmoidSums {
 public:
  void assign(std::span<const double> decisionValues, std::span<const double> newTargets,
              std::span<const double> newWeights) override {
    decisions = decisionValues;
    targets = newTargets;
    weights = newWeights;
    if (weights.empty()) ones.assign(std::min(chunkLength(), decisions.size()), 1);
  }

  double loss(double A, double B) override {
    double total = 0;
    sumChunks<double>(
        [=](const double* d, const double* t, const double* w, std::uint64_t count) {
          return sigmoidSweeps().functional(d, t, w, count, A, B);
        },
        [&](double sum) { total += sum; });
    return total;
  }

  SigmoidHessian<double> derivatives(double A, double B) override {
    SigmoidHessian<double> total{};
    sumChunks<SigmoidHessian<double>>(
        [=](const double* d, const double* t, const double* w, std::uint64_t count) {
          return sigmoidSweeps().hessian(d, t, w, count, A, B);
        },
        [&](const SigmoidHessian<double>& sum) { addDerivatives(total, sum); });
    return total;
  }

 private:
  [[nodiscard]] std::uint64_t chunkLength() const {
    return std::max<std::uint64_t>(4096, (decisions.size() + maxChunks - 1) / maxChunks);
  }

  // The chunks' sums in order; sweep(decision values, targets, weights, count) gives one chunk's.
  template <typename Sum, typename Sweep, typename Use>
  void sumChunks(const Sweep& sweep, const Use& use) const {
    const std::uint64_t n = decisions.size();
    const std::uint64_t chunk = chunkLength();
    std::array<Sum, maxChunks> sums{};
    zel::forEachChunk(n, chunk, nanosecondsPerSample, [&](std::uint64_t begin, std::uint64_t end) {
      const double* const w = weights.empty() ? ones.data() : weights.data() + begin;
      sums[begin / chunk] = sweep(decisions.data() + begin, targets.data() + begin, w, end - begin);
    });
    for (const Sum& sum : sums) use(sum);
  }

  std::span<const double> decisions;
  std::span<const double> targets;
  std::span<const double> weights;
  std::vector<double> ones;  // a chunk's weights where there are none
};

}  // namespace

std::unique_ptr<SigmoidSums> makeHostSigmoidSums() { return std::make_unique<HostSigmoidSums>(); }

}  // namespace zelsvm
