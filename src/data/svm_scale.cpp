#include "data/svm_scale.h"

#include <set>
#include <utility>

#include "base/errors.h"

namespace zelsvm {

template <typename T>
void SvmScale<T>::setRanges(const zel::Interval& newXRange, const zel::Interval& newYRange) {
  features = newXRange;
  targets = newYRange;
}

template <typename T>
void SvmScale<T>::initialize(const SvmData<T>& data) {
  const zelmag::AbstractMatrix<T>& matrix = data.matrix();
  if (matrix.rows() == 0) throw zel::AppException("Unable to scale an empty data set.");
  numbers = matrix.features();
  bounds = std::make_unique<HostVector<zel::Interval>>(matrix.cols());
  if (scalesFeatures())
    matrix.collectBounds(*bounds);
  else
    bounds->fill({0, 0});
  if (!scalesTargets()) return;
  targetBounds = {data.label(0), data.label(0)};
  for (std::uint64_t i = 1; i < matrix.rows(); ++i) {
    const T z = data.label(i);
    if (targetBounds.lower > z) targetBounds.lower = z;
    if (z > targetBounds.upper) targetBounds.upper = z;
  }
  updateVarianceFactor();
}

template <typename T>
void SvmScale<T>::assign(const zel::Interval& newXRange, const zel::Interval& newYRange,
                         const zel::Interval& newYBounds,
                         const zelmag::BoundsByFeature& newBounds) {
  setRanges(newXRange, newYRange);
  targetBounds = newYBounds;
  setBounds(newBounds);
  updateVarianceFactor();
}

template <typename T>
void SvmScale<T>::setBounds(const zelmag::BoundsByFeature& newBounds) {
  numbers = newBounds.empty() ? 0 : newBounds.rbegin()->first + 1;
  if (zelmag::fewInUse(numbers.count(), newBounds.size())) {
    std::vector<std::uint32_t> listed;
    for (const auto& [feature, pair] : newBounds)
      listed.push_back(static_cast<std::uint32_t>(feature));
    numbers = {numbers.count(), std::move(listed)};
  }
  bounds = std::make_unique<HostVector<zel::Interval>>(numbers.columns());
  bounds->fill({0, 0});
  for (const auto& [feature, pair] : newBounds) bounds->set(numbers.find(feature), pair);
}

template <typename T>
zelmag::BoundsByFeature SvmScale<T>::boundsByFeature() const {
  zelmag::BoundsByFeature result;
  for (std::uint64_t j = 0; j < featureBounds().size(); ++j)
    result.emplace_hint(result.end(), numbers[j], featureBounds()[j]);
  return result;
}

template <typename T>
void SvmScale<T>::updateVarianceFactor() {
  const double range = targets.upper - targets.lower;
  const double spread = targetBounds.upper - targetBounds.lower;
  if (range != 0) variance = (spread * spread) / (range * range);
}

template <typename T>
const HostVector<zel::Interval>& SvmScale<T>::featureBounds() const {
  if (!bounds) throw zel::AppException("The data scale is not yet initialized.");
  return *bounds;
}

template <typename T>
std::vector<std::uint64_t> SvmScale<T>::unknownFeatures(
    const zelmag::AbstractMatrix<T>& matrix) const {
  if (!scalesFeatures()) return {};
  const auto isKnown = [this](std::uint64_t feature) {
    const std::uint64_t j = numbers.find(feature);
    return j < numbers.columns() &&
           (featureBounds()[j].lower != 0 || featureBounds()[j].upper != 0);
  };
  const int* const columns = matrix.columnIndices();
  std::set<std::uint64_t> unknown;
  for (std::uint64_t k = 0; k < matrix.valueCount(); ++k) {
    const std::uint64_t feature =
        matrix.features()[matrix.isSparse() ? static_cast<std::uint64_t>(columns[k])
                                            : k % matrix.cols()];
    if (matrix.values()[k] != 0 && !isKnown(feature)) unknown.insert(feature);
  }
  return {unknown.begin(), unknown.end()};
}

template <typename T>
T SvmScale<T>::scaledTarget(T label) const {
  if (!scalesTargets()) return label;
  const T spread = targetBounds.upper - targetBounds.lower;
  if (spread == 0) return targets.lower;
  return (label - targetBounds.lower) * (targets.upper - targets.lower) / spread + targets.lower;
}

template <typename T>
T SvmScale<T>::unscaledTarget(T prediction) const {
  if (!scalesTargets()) return prediction;
  return (prediction - targets.lower) * (targetBounds.upper - targetBounds.lower) /
             (targets.upper - targets.lower) +
         targetBounds.lower;
}

template class SvmScale<double>;

}  // namespace zelsvm
