#include "training/folds.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "base/random.h"

namespace zelsvm {

zel::IndexList<> shuffledSamples(std::uint64_t count) {
  zel::IndexList<> permutation(count);
  std::iota(permutation.data(), permutation.data() + count, 0ull);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t offset = static_cast<std::uint64_t>(zel::nextRandom()) % (count - i);
    std::swap(permutation[i], permutation[i + offset]);
  }
  return permutation;
}

Fold foldOf(const zel::IndexList<>& permutation, std::uint64_t f, std::uint64_t folds) {
  const std::uint64_t n = permutation.size();
  const std::uint64_t begin = f * n / folds;
  const std::uint64_t end = (f + 1) * n / folds;
  std::vector<bool> held(begin == end ? 0 : n);
  for (std::uint64_t position = begin; position < end; ++position)
    held[permutation[position]] = true;
  Fold fold{zel::IndexList<>(end - begin), zel::IndexList<>(held.empty() ? 0 : n - (end - begin))};
  std::uint64_t heldCount = 0;
  std::uint64_t trainingCount = 0;
  for (std::uint64_t i = 0; i < held.size(); ++i) {
    if (held[i])
      fold.heldOut[heldCount++] = i;
    else
      fold.training[trainingCount++] = i;
  }
  return fold;
}

CountingSamples::CountingSamples(std::span<const double> weights, std::uint64_t samples) {
  const auto zeros = static_cast<std::uint64_t>(std::count(weights.begin(), weights.end(), 0.0));
  counting.resize(samples - zeros);
  others.resize(zeros);
  std::uint64_t next[2] = {};
  for (std::uint64_t i = 0; i < samples; ++i)
    if (weights.empty() || weights[i] != 0)
      counting[next[0]++] = i;
    else
      others[next[1]++] = i;
}

Fold CountingSamples::inAll(Fold&& fold, std::uint64_t f, std::uint64_t folds) const {
  if (others.size() == 0) return std::move(fold);
  std::vector<std::uint64_t> held;
  for (std::uint64_t i = 0; i < fold.heldOut.size(); ++i) held.push_back(counting[fold.heldOut[i]]);
  for (std::uint64_t i = f; i < others.size(); i += folds) held.push_back(others[i]);
  std::sort(held.begin(), held.end());
  Fold whole{zel::IndexList<>(held.size()), zel::IndexList<>(fold.training.size())};
  std::copy(held.begin(), held.end(), whole.heldOut.data());
  for (std::uint64_t i = 0; i < fold.training.size(); ++i)
    whole.training[i] = counting[fold.training[i]];
  return whole;
}

}  // namespace zelsvm
