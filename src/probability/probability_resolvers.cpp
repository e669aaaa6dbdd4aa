#include "probability/probability_resolvers.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "base/numbers.h"
#include "platform/portable_functions.h"
#include "probability/joint_probability.h"

namespace zelsvm {
namespace {

// In pair order.
template <typename T>
std::vector<Sigmoid> pairSigmoids(const GenericModel<T>& model) {
  std::vector<Sigmoid> sigmoids;
  forEachLabelPair(model.labels(), [&](std::uint64_t, const LabelPair& pair) {
    const auto found = model.sigmoids.find(pair);
    if (found == model.sigmoids.end())
      zel::throwAppException("Failed to find probability sigmoid for labels (%s, %s)",
                             zel::exactText(pair.first).c_str(),
                             zel::exactText(pair.second).c_str());
    sigmoids.push_back(found->second);
  });
  return sigmoids;
}

template <typename T>
std::uint64_t mostProbable(const HostVector<T>& probabilities) {
  std::uint64_t index = 0;
  T best = 0;
  for (std::uint64_t c = 0; c < probabilities.size(); ++c) {
    if (!(probabilities[c] >= best)) continue;
    best = probabilities[c];
    index = c;
  }
  return index;
}

}  // namespace

template <typename T>
void BinaryProbabilityResolver<T>::handle(HostVector<T>& output,
                                          const HostVector<T>& decisionValues,
                                          const GenericModel<T>& model) {
  const HostVector<T>& labels = model.labels();
  const std::vector<Sigmoid> sigmoids = pairSigmoids(model);
  const std::uint64_t n = output.size();
  JointProbability<T> joint(labels.size(), maxIterations, tolerance);
  HostVector<T> pairwise(sigmoids.size());
  for (std::uint64_t s = 0; s < n; ++s) {
    for (std::uint64_t t = 0; t < sigmoids.size(); ++t)
      pairwise.set(t, pairProbability(sigmoids[t], decisionValues[t * n + s]));
    const HostVector<T>& probabilities = joint.couple(pairwise);
    output.set(s, labels[mostProbable(probabilities)]);
    record(probabilities, s);
  }
}

// No exponential overflows; a value that is no number counts as the smallest probability.
template <typename T>
T BinaryProbabilityResolver<T>::pairProbability(const Sigmoid& sigmoid, T decisionValue) const {
  const T x = decisionValue * sigmoid.A + sigmoid.B;
  const T e = portableExp(-std::fabs(x));
  const T r = (x > 0 ? e : 1) / (1 + e);
  return std::min(1 - minProbability, std::max(minProbability, r));
}

template <typename T>
void MulticlassProbabilityEstimator<T>::record(const HostVector<T>& sampleProbabilities,
                                               std::uint64_t sample) {
  const std::uint64_t k = sampleProbabilities.size();
  probabilities->copyFrom(sampleProbabilities, sample * k, 0, k);
}

template class BinaryProbabilityResolver<double>;
template class MulticlassProbabilityEstimator<double>;

}  // namespace zelsvm
