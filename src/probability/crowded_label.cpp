#include "probability/crowded_label.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <vector>

#include "base/memory.h"
#include "base/random.h"
#include "model/generic_model.h"
#include "platform/system/available_memory.h"
#include "probability/probability_trainers.h"
#include "training/folds.h"

namespace zelsvm {
namespace {

using Found = std::optional<CrowdedLabel>;

constexpr std::uint64_t smallestSolution = zel::roundedCapacity(1) * sizeof(double);

// Of two labels, which all samples have.
template <typename T>
Found findInPair(const std::vector<T>& labels, T first, T second) {
  const auto isFirst = [&](std::uint64_t sample) { return labels[sample] == first; };
  const std::uint64_t n = labels.size();
  const auto ofFirst = static_cast<std::uint64_t>(std::count(labels.begin(), labels.end(), first));
  const zel::IndexList<> permutation = shuffledSamples(n);
  const unsigned long long* const order = permutation.data();
  for (std::uint64_t f = 0; f < probabilityFolds; ++f) {
    const std::uint64_t begin = f * n / probabilityFolds;
    const std::uint64_t end = (f + 1) * n / probabilityFolds;
    // Without a second sample there is nothing to train.
    if (begin == end || n - (end - begin) < 2) continue;
    const auto held =
        static_cast<std::uint64_t>(std::count_if(order + begin, order + end, isFirst));
    if (held == ofFirst) return CrowdedLabel{first, held};
    if (end - begin - held == n - ofFirst) return CrowdedLabel{second, n - ofFirst};
  }
  return {};
}

template <typename T>
Found findInTraining(const std::vector<T>& labels) {
  std::map<T, std::uint64_t> counts;
  for (const T label : labels) ++counts[label];
  if (counts.size() == 2) return findInPair(labels, counts.begin()->first, counts.rbegin()->first);
  // Memory could not hold the solutions of so many pairs: the training will refuse them.
  if (pairCount(counts.size()) > zel::availableHostMemory() / smallestSolution) return {};
  for (auto first = counts.begin(); first != counts.end(); ++first)
    for (auto second = std::next(first); second != counts.end(); ++second) {
      // A pair's samples stand label by label.
      std::vector<T> pair(first->second, first->first);
      pair.insert(pair.end(), second->second, second->first);
      if (const Found found = findInPair(pair, first->first, second->first)) return found;
    }
  return {};
}

template <typename T>
Found findInFolds(const std::vector<T>& labels, std::uint64_t folds) {
  const zel::IndexList<> permutation = shuffledSamples(labels.size());
  for (std::uint64_t f = 0; f < folds; ++f) {
    const Fold fold = foldOf(permutation, f, folds);
    if (fold.training.size() < 2) continue;
    std::vector<T> training;
    for (std::uint64_t i = 0; i < fold.training.size(); ++i)
      training.push_back(labels[fold.training[i]]);
    if (const Found found = findInTraining(training)) return found;
  }
  return {};
}

}  // namespace

template <typename T>
std::optional<CrowdedLabel> findCrowdedLabel(const SvmData<T>& data, std::uint64_t folds) {
  std::vector<T> labels;
  for (std::uint64_t i = 0; i < data.sampleCount(); ++i)
    if (data.weight(i) != 0) labels.push_back(data.label(i));
  const unsigned here = zel::randomSeedHere();
  const Found found = folds < 2 ? findInTraining(labels) : findInFolds(labels, folds);
  zel::seedRandom(here);
  return found;
}

template std::optional<CrowdedLabel> findCrowdedLabel(const SvmData<double>&, std::uint64_t);

}  // namespace zelsvm
