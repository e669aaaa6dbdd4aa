#include "platform/host/sweeps/sigmoid_sweeps.h"

#include "platform/host/isa/lanes.h"
#include "platform/host/isa/vector_math.h"
#include "rules/sigmoid_rules.h"

namespace zelsvm::ZEL_ISA {
namespace {

using D = Lanes<double>;

// Sums that run side by side, as many on every instruction set: the first is that of samples 0, 8,
// 16 and so on.
constexpr std::uint64_t sumCount = 8;
constexpr std::uint64_t vectors = sumCount / D::count;

// Decision values, targets and weights of some samples, sumCount at a time.
class Samples {
 public:
  Samples(const double* decisions, const double* targets, const double* weights, std::uint64_t left)
      : decisions(decisions), targets(targets), weights(weights), left(left) {
    if (left >= sumCount) return;
    for (std::uint64_t i = 0; i < left; ++i) {
      lastDecisions[i] = decisions[i];
      lastTargets[i] = targets[i];
      lastWeights[i] = weights[i];
    }
    this->decisions = lastDecisions;
    this->targets = lastTargets;
    this->weights = lastWeights;
  }
  Samples(const Samples&) = delete;
  Samples& operator=(const Samples&) = delete;

  HWY_INLINE D decision(std::uint64_t vector) const { return at(decisions, vector); }
  HWY_INLINE D target(std::uint64_t vector) const { return at(targets, vector); }
  // sum grows by the weighted terms of samples that there are.
  HWY_INLINE void add(std::uint64_t vector, D terms, D& sum) const {
    const std::uint64_t before = vector * D::count;
    const auto present = hn::FirstN(D::Tag(), left > before ? left - before : 0);
    sum = sum + D(hn::IfThenElseZero(present, (at(weights, vector) * terms).v));
  }

 private:
  static HWY_INLINE D at(const double* values, std::uint64_t vector) {
    return hn::LoadU(D::Tag(), values + vector * D::count);
  }

  const double* decisions;
  const double* targets;
  const double* weights;
  std::uint64_t left;
  double lastDecisions[sumCount] = {};
  double lastTargets[sumCount] = {};
  double lastWeights[sumCount] = {};
};

HWY_INLINE D smallExponential(D f) { return exp(D(hn::Neg(hn::Abs(f.v)))); }

double total(const D (&sums)[vectors]) {
  alignas(64) double parts[sumCount];
  for (std::uint64_t v = 0; v < vectors; ++v) sums[v].store(parts + v * D::count);
  double sum = 0;
  for (const double part : parts) sum += part;
  return sum;
}

double functional(const double* d, const double* t, const double* w, std::uint64_t n, double A,
                  double B) {
  D sums[vectors];
  for (D& sum : sums) sum = 0.0;
  for (std::uint64_t i = 0; i < n; i += sumCount) {
    const Samples samples(d + i, t + i, w + i, n - i);
    for (std::uint64_t v = 0; v < vectors; ++v) {
      const D f = sigmoidArgument(samples.decision(v), D(A), D(B));
      const D loss = sigmoidLoss(samples.target(v), f, log(smallExponential(f) + 1.0));
      samples.add(v, loss, sums[v]);
    }
  }
  return total(sums);
}

SigmoidHessian<double> hessian(const double* d, const double* t, const double* w, std::uint64_t n,
                               double A, double B) {
  D sums[5][vectors];
  for (auto& of : sums)
    for (D& sum : of) sum = 0.0;
  for (std::uint64_t i = 0; i < n; i += sumCount) {
    const Samples samples(d + i, t + i, w + i, n - i);
    for (std::uint64_t v = 0; v < vectors; ++v) {
      const D decision = samples.decision(v);
      const D f = sigmoidArgument(decision, D(A), D(B));
      const SigmoidHessian<D> part =
          sigmoidDerivatives(decision, samples.target(v), f, smallExponential(f));
      samples.add(v, part.g1, sums[0][v]);
      samples.add(v, part.g2, sums[1][v]);
      samples.add(v, part.h11, sums[2][v]);
      samples.add(v, part.h21, sums[3][v]);
      samples.add(v, part.h22, sums[4][v]);
    }
  }
  return {total(sums[0]), total(sums[1]), total(sums[2]), total(sums[3]), total(sums[4])};
}

}  // namespace

extern const SigmoidSweeps sigmoidSweepTable;
const SigmoidSweeps sigmoidSweepTable{functional, hessian};

}  // namespace zelsvm::ZEL_ISA
