#include "zeldplus/zelsvm/data/svm_scale.h"

#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
void SvmScale<T>::setRanges(const double2& newXRange, const double2& newYRange) {
  features = newXRange;
  targets = newYRange;
}

template <typename T>
void SvmScale<T>::initialize(SvmData<T>& data) {
  const zelmag::AbstractMatrix<T>& matrix = data.matrix();
  if (matrix.rows() == 0) throw zel::AppException("Unable to scale an empty data set.");
  boundsByFeature = std::make_unique<HostVector<double2>>(matrix.cols());
  if (scalesFeatures())
    matrix.collectBounds(*boundsByFeature);
  else
    boundsByFeature->fill({0, 0});
  if (!scalesTargets()) return;
  targetBounds = {data.label(0), data.label(0)};
  for (std::uint64_t i = 1; i < matrix.rows(); ++i) {
    const T z = data.label(i);
    if (targetBounds.x > z) targetBounds.x = z;
    if (z > targetBounds.y) targetBounds.y = z;
  }
  updateVarianceFactor();
}

template <typename T>
void SvmScale<T>::assign(const double2& newXRange, const double2& newYRange,
                         const double2& newYBounds, const double2* bounds, std::uint64_t count) {
  setRanges(newXRange, newYRange);
  targetBounds = newYBounds;
  boundsByFeature = std::make_unique<HostVector<double2>>(count);
  for (std::uint64_t j = 0; j < count; ++j) boundsByFeature->set(j, bounds[j]);
  updateVarianceFactor();
}

template <typename T>
void SvmScale<T>::copyFrom(const SvmScale& other) {
  assign(other.features, other.targets, other.targetBounds, other.featureBounds().data(),
         other.featureCount());
}

template <typename T>
void SvmScale<T>::updateVarianceFactor() {
  const double range = targets.y - targets.x;
  const double spread = targetBounds.y - targetBounds.x;
  if (range != 0) variance = (spread * spread) / (range * range);
}

template <typename T>
const HostVector<double2>& SvmScale<T>::featureBounds() const {
  if (!boundsByFeature) throw zel::AppException("The data scale is not yet initialized.");
  return *boundsByFeature;
}

template <typename T>
T SvmScale<T>::scaledTarget(T label) const {
  if (!scalesTargets()) return label;
  const T spread = targetBounds.y - targetBounds.x;
  if (spread == 0) return targets.x;
  return (label - targetBounds.x) * (targets.y - targets.x) / spread + targets.x;
}

template <typename T>
T SvmScale<T>::unscaledTarget(T prediction) const {
  if (!scalesTargets()) return prediction;
  return (prediction - targets.x) * (targetBounds.y - targetBounds.x) / (targets.y - targets.x) +
         targetBounds.x;
}

template class SvmScale<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
