#include "prediction/prediction_handlers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/errors.h"

namespace zelsvm {
namespace {

// Samples whose votes are counted together, so that the counters stay in the cache.
constexpr std::uint64_t stripe = 512;

// The class that counts a class's votes: the first with an equal label, so that equal labels share
// theirs. The label count for a NaN, which equals none and gets no vote.
template <typename T>
std::vector<std::uint64_t> countingClasses(const HostVector<T>& labels) {
  const T* const begin = labels.data();
  const T* const end = begin + labels.size();
  std::vector<std::uint64_t> classes;
  for (const T* label = begin; label != end; ++label)
    classes.push_back(static_cast<std::uint64_t>(std::find(begin, end, *label) - begin));
  return classes;
}

}  // namespace

template <typename T>
void DecisionCheck<T>::handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                              const GenericModel<T>& /*model*/) {
  for (std::uint64_t i = 0; i < decisionValues.size(); ++i)
    if (std::isnan(decisionValues[i]))
      zel::throwAppException("The decision value of sample %lu is not a number.",
                             i % output.size() + 1);
}

template <typename T>
void DecisionRecord<T>::handle(HostVector<T>& /*output*/, const HostVector<T>& decisionValues,
                               const GenericModel<T>& /*model*/) {
  values.resize(decisionValues.size());
  values.copyFrom(decisionValues, 0, 0, decisionValues.size());
}

template <typename T>
void BinaryDecisionResolver<T>::handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                                       const GenericModel<T>& /*model*/) {
  for (std::uint64_t i = 0; i < decisionValues.size(); ++i) output.set(i, decisionValues[i]);
}

template <typename T>
void MulticlassResolver<T>::handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                                   const GenericModel<T>& model) {
  const HostVector<T>& labels = model.labels();
  const std::uint64_t k = labels.size();
  const std::uint64_t n = output.size();
  const std::vector<std::uint64_t> counting = countingClasses(labels);
  std::vector<std::uint64_t> votes((k + 1) * stripe);
  for (std::uint64_t first = 0; first < n; first += stripe) {
    const std::uint64_t count = std::min(stripe, n - first);
    std::fill(votes.begin(), votes.end(), 0);
    const T* d = decisionValues.data() + first;
    for (std::uint64_t i = 0; i < k; ++i)
      for (std::uint64_t j = i + 1; j < k; ++j, d += n) {
        std::uint64_t* const forI = votes.data() + counting[i] * stripe;
        std::uint64_t* const forJ = votes.data() + counting[j] * stripe;
        for (std::uint64_t s = 0; s < count; ++s) {
          forI[s] += d[s] > 0;
          forJ[s] += !(d[s] >= 0);
        }
      }
    for (std::uint64_t s = 0; s < count; ++s) {
      std::uint64_t best = 0;
      if (undecided == Undecided::hasFirstLabel) output.set(first + s, labels[0]);
      for (std::uint64_t c = 0; c < k; ++c) {
        if (counting[c] == k || votes[counting[c] * stripe + s] <= best) continue;
        best = votes[counting[c] * stripe + s];
        output.set(first + s, labels[c]);
      }
    }
  }
}

template class DecisionCheck<double>;
template class DecisionRecord<double>;
template class BinaryDecisionResolver<double>;
template class MulticlassResolver<double>;

}  // namespace zelsvm
