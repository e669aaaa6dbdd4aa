#include "platform/host/block/sparse_block.h"

#include <algorithm>
#include <functional>

#include "data/full_matrix.h"

namespace zelsvm {
namespace {

constexpr std::uint64_t normsTogether = 64 / sizeof(float);

std::uint64_t offset(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t row) {
  return static_cast<std::uint64_t>(matrix.rowOffsets()[row]);
}

bool isAscending(const int* features, std::uint64_t count) {
  return std::adjacent_find(features, features + count, std::greater_equal<>()) == features + count;
}

// A product that is summed as those of the block: their sweep, for a single sum.
template <typename T>
T sumOfSquares(const std::vector<T>& values) {
  T sum{};
  blockSweeps<T>().norms(values.data(), values.size(), 1, &sum);
  return sum;
}

}  // namespace

template <typename T>
void SparseSamples<T>::assign(const SampleChoice& samples) {
  const zelmag::AbstractMatrix<double>& matrix = samples.matrix();
  const std::uint64_t count = samples.count();
  features = matrix.columnIndices();
  values = matrix.values();
  begins.resize(count);
  ends.resize(count);
  bool ascending = true;
  storedCount = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    begins[i] = offset(matrix, samples[i]);
    ends[i] = offset(matrix, samples[i] + 1);
    storedCount += ends[i] - begins[i];
    ascending = ascending && isAscending(features + begins[i], ends[i] - begins[i]);
  }
  if (!ascending) copyAscending(samples);
  makeNorms();
}

template <typename T>
void SparseSamples<T>::copyAscending(const SampleChoice& samples) {
  ownFeatures.clear();
  ownValues.clear();
  ownFeatures.reserve(storedCount);
  ownValues.reserve(storedCount);
  zelmag::AscendingRow<double> row;
  for (std::uint64_t i = 0; i < samples.count(); ++i) {
    const std::uint64_t count = row.assign(features, values, begins[i], ends[i]);
    begins[i] = ownFeatures.size();
    ownFeatures.insert(ownFeatures.end(), row.columns, row.columns + count);
    ownValues.insert(ownValues.end(), row.values, row.values + count);
    ends[i] = ownFeatures.size();
  }
  features = ownFeatures.data();
  values = ownValues.data();
}

template <typename T>
void SparseSamples<T>::makeNorms() {
  // A panel ends there at the latest.
  const std::uint64_t width = blockSweeps<T>().panelColumns;
  squares.resize((count() + width - 1) / width * width + normsTogether);
  std::fill_n(squares.data(), squares.size(), T{0});
  std::vector<T> row;
  for (std::uint64_t i = 0; i < count(); ++i) {
    row.resize(ends[i] - begins[i]);
    std::transform(values + begins[i], values + ends[i], row.begin(),
                   [](double value) { return static_cast<T>(value); });
    squares.data()[i] = sumOfSquares(row);
  }
}

template <typename T>
void SparseRows<T>::setFeatures(std::uint64_t count) {
  placeOf.assign(count, 0);
  placed.clear();
}

template <typename T>
void SparseRows<T>::assign(const SampleChoice& samples) {
  for (const int feature : placed) placeOf[static_cast<std::uint64_t>(feature)] = 0;
  placed.clear();
  for (std::uint64_t r = 0; r < samples.count(); ++r) {
    readEntries(samples.matrix(), samples[r]);
    placeFeatures();
  }
  elements.resize((placed.size() + 1) * groupRows<T>);
  std::fill_n(elements.data(), elements.size(), T{0});
  for (std::uint64_t r = 0; r < samples.count(); ++r) {
    readEntries(samples.matrix(), samples[r]);
    addEntries(r);
    squares[r] = entryNorm();
  }
}

template <typename T>
void SparseRows<T>::readEntries(const zelmag::AbstractMatrix<double>& matrix,
                                std::uint64_t sample) {
  entryFeatures.clear();
  entryValues.clear();
  const auto add = [this](int feature, double value) {
    entryFeatures.push_back(feature);
    entryValues.push_back(static_cast<T>(value));
  };
  if (!matrix.isSparse()) {
    zelmag::forEachStretch(zelmag::asFull(matrix), sample,
                           [&add](const double* values, std::uint64_t begin, std::uint64_t end) {
                             for (std::uint64_t k = begin; k < end; ++k, ++values)
                               if (*values != 0) add(static_cast<int>(k), *values);
                           });
    return;
  }
  const std::uint64_t count = ascending.assign(matrix.columnIndices(), matrix.values(),
                                               offset(matrix, sample), offset(matrix, sample + 1));
  for (std::uint64_t k = 0; k < count; ++k) add(ascending.columns[k], ascending.values[k]);
}

template <typename T>
void SparseRows<T>::placeFeatures() {
  for (const int feature : entryFeatures) {
    if (static_cast<std::uint64_t>(feature) >= placeOf.size()) continue;
    unsigned& place = placeOf[static_cast<std::uint64_t>(feature)];
    if (place != 0) continue;
    placed.push_back(feature);
    place = static_cast<unsigned>(placed.size());
  }
}

template <typename T>
void SparseRows<T>::addEntries(std::uint64_t r) {
  for (std::uint64_t k = 0; k < entryFeatures.size(); ++k) {
    const auto feature = static_cast<std::uint64_t>(entryFeatures[k]);
    if (feature < placeOf.size())
      elements.data()[placeOf[feature] * groupRows<T> + r] = entryValues[k];
  }
}

template <typename T>
T SparseRows<T>::entryNorm() const {
  return sumOfSquares(entryValues);
}

template class SparseSamples<double>;
template class SparseSamples<float>;
template class SparseRows<double>;
template class SparseRows<float>;

}  // namespace zelsvm
