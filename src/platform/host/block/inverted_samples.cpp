#include "platform/host/block/inverted_samples.h"

#include <algorithm>
#include <numeric>

namespace zelsvm {
namespace {

constexpr std::uint64_t leastStretch = 2048;

// Stretches of at least as many values as there are features.
template <typename T>
std::uint64_t stretchFor(std::uint64_t rows, std::uint64_t features, std::uint64_t values) {
  const std::uint64_t stretches =
      std::max<std::uint64_t>(1, values / std::max<std::uint64_t>(1, features));
  const std::uint64_t even = (rows + stretches - 1) / stretches;
  return std::max(leastStretch, (even + groupRows<T> - 1) / groupRows<T> * groupRows<T>);
}

}  // namespace

template <typename T>
void InvertedSamples<T>::assign(const SparseFactors<T>& samples, std::uint64_t count,
                                std::uint64_t featureCount) {
  rows = count;
  cols = featureCount;
  std::uint64_t stored = 0;
  for (std::uint64_t i = 0; i < rows; ++i) stored += samples.ends[i] - samples.begins[i];
  stretchRows = stretchFor<T>(rows, cols, stored);
  const std::uint64_t cells = (rows + stretchRows - 1) / stretchRows * cols;
  elements.resize(stored);
  positions.resize(stored);
  starts.resize(cells + 1);
  featureCounts.assign(cols, 0);
  unsigned* const next = starts.data();
  std::fill_n(next, cells + 1, 0u);
  const auto forEachValue = [&](const auto& visit) {
    for (std::uint64_t i = 0; i < rows; ++i)
      for (std::uint64_t p = samples.begins[i]; p < samples.ends[i]; ++p)
        visit(i, static_cast<std::uint64_t>(samples.features[p]), samples.values[p]);
  };
  forEachValue([&](std::uint64_t i, std::uint64_t j, double) {
    ++next[cell(i, j) + 1];
    ++featureCounts[j];
  });
  std::partial_sum(next, next + cells + 1, next);
  forEachValue([&](std::uint64_t i, std::uint64_t j, double value) {
    const unsigned place = next[cell(i, j)]++;
    elements.data()[place] = static_cast<T>(value);
    positions.data()[place] = static_cast<unsigned>(i % stretchRows);
  });
  // Each cell's start has moved to its end, which is the next one's start.
  std::copy_backward(next, next + cells, next + cells + 1);
  next[0] = 0;
}

template <typename T>
void InvertedSamples<T>::multiply(const std::vector<int>& features, const std::vector<T>& values,
                                  std::uint64_t begin, T* out) const {
  std::fill_n(out, std::min(stretchRows, rows - begin), T{0});
  const auto addColumn = blockSweeps<T>().addColumn;
  for (std::size_t k = 0; k < features.size(); ++k) {
    const auto feature = static_cast<std::uint64_t>(features[k]);
    if (feature >= cols) continue;
    const std::uint64_t c = cell(begin, feature);
    addColumn(elements.data(), positions.data(), starts.data()[c], starts.data()[c + 1], values[k],
              out);
  }
}

template <typename T>
double InvertedSamples<T>::work(const std::vector<int>& features) const {
  double sum = 0;
  for (const int feature : features)
    if (static_cast<std::uint64_t>(feature) < cols)
      sum += featureCounts[static_cast<std::uint64_t>(feature)];
  return sum;
}

template class InvertedSamples<double>;
template class InvertedSamples<float>;

}  // namespace zelsvm
