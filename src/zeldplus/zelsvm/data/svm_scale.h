// Linear scaling of features and targets into chosen intervals, learnt from data or restored from a
// scale parameter file.
#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <memory>
#include <string>

#include "zeldplus/zelsvm/data/svm_data.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Reads "lower:upper"; (0, 0) for an empty text or a missing end. Throws AppException for a text
// without ":" and for lower >= upper.
double2 parseScaleRange(const std::string& text);

// Throws AppException for lower >= upper.
void requireScaleRange(const double2& range);

// Ranges are (lower, upper), bounds (minimum, maximum). A range with equal ends means no scaling.
// Filled once by initialize, restore or assign, then only read.
template <typename T>
class SvmScale {
 public:
  SvmScale() = default;
  SvmScale(const SvmScale&) = delete;
  SvmScale& operator=(const SvmScale&) = delete;
  virtual ~SvmScale() = default;

  void setRanges(const double2& newXRange, const double2& newYRange);
  // Takes the bounds from the data; throws AppException for an empty data set.
  void initialize(SvmData<T>& data);
  // Takes bounds, and ranges where the file has them, from a scale parameter file.
  void restore(const std::string& path, std::uint64_t indexBase);
  // Takes ranges and bounds as a model file holds them.
  void assign(const double2& newXRange, const double2& newYRange, const double2& newYBounds,
              const double2* bounds, std::uint64_t count);
  void copyFrom(const SvmScale& other);
  // Writes a scale parameter file; throws AppException when it cannot be written completely.
  void save(const std::string& path) const;

  [[nodiscard]] const double2& xRange() const { return features; }
  [[nodiscard]] const double2& yRange() const { return targets; }
  [[nodiscard]] const double2& yBounds() const { return targetBounds; }
  [[nodiscard]] bool scalesFeatures() const { return features.x != features.y; }
  [[nodiscard]] bool scalesTargets() const { return targets.x != targets.y; }
  // One (minimum, maximum) per feature; throws AppException before there are any.
  [[nodiscard]] const HostVector<double2>& featureBounds() const;
  [[nodiscard]] std::uint64_t featureCount() const {
    return boundsByFeature ? boundsByFeature->size() : 0;
  }
  // Squared unscaled units per squared scaled unit of the targets.
  [[nodiscard]] double varianceFactor() const { return variance; }

  // Target value in scaled units, and back.
  [[nodiscard]] T scaledTarget(T label) const;
  [[nodiscard]] T unscaledTarget(T prediction) const;

 private:
  void updateVarianceFactor();

  double2 features{0, 0};
  double2 targets{0, 0};
  double2 targetBounds{0, 0};
  std::unique_ptr<HostVector<double2>> boundsByFeature;
  double variance = 1.0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
