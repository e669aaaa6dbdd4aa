#include "training/label_classifier.h"

#include <algorithm>

namespace zelsvm {

template <typename T>
SvmLabelClassifier<T>::SvmLabelClassifier(const SvmData<T>& data, std::uint64_t samples)
    : grouped(samples) {
  distinct.resize(samples);
  for (std::uint64_t i = 0; i < samples; ++i) distinct[i] = data.label(i);
  std::sort(distinct.begin(), distinct.end());
  distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());

  const auto positionOf = [this](T label) {
    return std::lower_bound(distinct.begin(), distinct.end(), label) - distinct.begin();
  };
  starts.assign(distinct.size() + 1, 0);
  for (std::uint64_t i = 0; i < samples; ++i)
    ++starts[static_cast<std::uint64_t>(positionOf(data.label(i))) + 1];
  for (std::uint64_t c = 0; c < distinct.size(); ++c) starts[c + 1] += starts[c];
  std::vector<std::uint64_t> next(starts.begin(), starts.end() - 1);
  for (std::uint64_t i = 0; i < samples; ++i)
    grouped[next[static_cast<std::uint64_t>(positionOf(data.label(i)))]++] = i;
}

template class SvmLabelClassifier<double>;

}  // namespace zelsvm
