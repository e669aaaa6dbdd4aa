#include "platform/host/rows/packed_samples.h"

#include <algorithm>

namespace zelsvm {
namespace {

constexpr std::uint64_t startOf(std::uint64_t sample, std::uint64_t cols) {
  return sample / panelSamples * panelSamples * cols + sample % panelSamples;
}

// Calls take(sample, column, value) for the stored values, panel by panel.
template <typename Take>
void forEachValue(const zelmag::AbstractMatrix<double>& matrix, Take take) {
  const double* const values = matrix.values();
  const std::uint64_t cols = matrix.cols();
  if (matrix.isSparse()) {
    const int* const offsets = matrix.rowOffsets();
    for (std::uint64_t i = 0; i < matrix.rows(); ++i)
      for (int p = offsets[i]; p < offsets[i + 1]; ++p)
        take(i, static_cast<std::uint64_t>(matrix.columnIndices()[p]), values[p]);
    return;
  }
  for (std::uint64_t first = 0; first < matrix.rows(); first += panelSamples) {
    const std::uint64_t last = std::min(first + panelSamples, matrix.rows());
    for (std::uint64_t j = 0; j < cols; ++j)
      for (std::uint64_t i = first; i < last; ++i) take(i, j, values[i * cols + j]);
  }
}

}  // namespace

void PackedSamples::assign(const zelmag::AbstractMatrix<double>& matrix,
                           std::uint64_t cachedBytes) {
  cols = matrix.cols();
  panelCount = (matrix.rows() + panelSamples - 1) / panelSamples;
  if (elementCount() * sizeof(double) > cachedBytes) {
    const auto found = DecimalScale::find(matrix.values(), matrix.valueCount());
    if (found && packWhole(matrix, *found)) return;
  }
  scale.reset();
  unit = 1;
  remainders.clear();
  wholeNumbers.resize(0);
  elements.resize(elementCount());
  std::fill_n(elements.data(), elements.size(), 0.0);
  forEachValue(matrix, [this](std::uint64_t i, std::uint64_t j, double value) {
    elements.data()[startOf(i, cols) + j * panelSamples] += value;
  });
}

// False where repeated columns add up to more than 32 bits hold.
bool PackedSamples::packWhole(const zelmag::AbstractMatrix<double>& matrix,
                              const DecimalScale& newScale) {
  scale = newScale;
  unit = 1 / (newScale.power() * newScale.power());
  remainders.clear();
  elements.resize(0);
  wholeNumbers.resize(elementCount());
  std::fill_n(wholeNumbers.data(), wholeNumbers.size(), 0);
  bool fits = true;
  forEachValue(matrix, [&](std::uint64_t i, std::uint64_t j, double value) {
    std::int32_t& sum = wholeNumbers.data()[startOf(i, cols) + j * panelSamples];
    const double whole = newScale.nearest(value);
    fits &= !__builtin_add_overflow(sum, static_cast<std::int32_t>(whole), &sum);
    if (!newScale.isWhole(value)) remainders.push_back({i, j, value * newScale.power() - whole});
  });
  return fits;
}

void PackedSamples::toFactors(double* row) const {
  if (!scale) return;
  for (std::uint64_t j = 0; j < cols; ++j)
    row[j] = scale->isWhole(row[j]) ? scale->nearest(row[j]) : row[j] * scale->power();
}

void PackedSamples::multiply(std::uint64_t begin, std::uint64_t end, const double* const* factors,
                             double* const* out, unsigned count) const {
  const std::uint64_t first = startOf(begin * panelSamples, cols);
  if (!scale)
    return rowProducts().numbers(elements.data() + first, end - begin, cols, factors, out, count,
                                 unit);
  rowProducts().wholeNumbers(wholeNumbers.data() + first, end - begin, cols, factors, out, count,
                             unit);
  addRemainders(begin * panelSamples, end * panelSamples, factors, out, count);
}

void PackedSamples::addRemainders(std::uint64_t begin, std::uint64_t end,
                                  const double* const* factors, double* const* out,
                                  unsigned count) const {
  const auto before = [](const Remainder& r, std::uint64_t sample) { return r.sample < sample; };
  for (auto r = std::lower_bound(remainders.begin(), remainders.end(), begin, before);
       r != remainders.end() && r->sample < end; ++r)
    for (unsigned c = 0; c < count; ++c)
      out[c][r->sample - begin] += factors[c][r->column] * r->value * unit;
}

}  // namespace zelsvm
