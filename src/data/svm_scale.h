// Linear scaling of features and targets into chosen intervals, learnt from data or restored from a
// scale parameter file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/files.h"
#include "base/interval.h"
#include "data/bounds.h"
#include "data/svm_data.h"

namespace zelsvm {

// Reads "lower:upper"; (0, 0) for an empty text or a missing end. What is ignored goes to
// zel::warn. Throws AppException for a text without ":" and as requireScaleRange does.
zel::Interval parseScaleRange(const std::string& text);

// Throws AppException for lower >= upper, and for a range of infinite length or without one.
void requireScaleRange(const zel::Interval& range);

// Ranges are (lower, upper), bounds (minimum, maximum). A range with equal ends means no scaling.
// Filled once by initialize, restore or assign, then only read.
template <typename T>
class SvmScale {
 public:
  SvmScale() = default;
  SvmScale(const SvmScale&) = delete;
  SvmScale& operator=(const SvmScale&) = delete;
  virtual ~SvmScale() = default;

  void setRanges(const zel::Interval& newXRange, const zel::Interval& newYRange);
  // Takes the bounds from the data; throws AppException for an empty data set.
  void initialize(const SvmData<T>& data);
  // Takes bounds, and ranges where the file has them, from a scale parameter file. Features are not
  // scaled where it has none of their bounds. Throws AppException for a file that is none or a cut
  // one, and where a range has no bounds.
  void restore(const std::string& path);
  // Takes ranges and bounds as a model file holds them. A feature without bounds that lies below
  // the last one with bounds gets (0, 0); where few features have bounds it gets no column.
  void assign(const zel::Interval& newXRange, const zel::Interval& newYRange,
              const zel::Interval& newYBounds, const zelmag::BoundsByFeature& newBounds);
  // Writes a scale parameter file; throws AppException when it cannot be written completely.
  void save(const std::string& path) const;
  // The same into an open file, which the caller closes.
  void write(zel::CTextFile& file) const;

  [[nodiscard]] const zel::Interval& xRange() const { return features; }
  [[nodiscard]] const zel::Interval& yRange() const { return targets; }
  [[nodiscard]] const zel::Interval& yBounds() const { return targetBounds; }
  [[nodiscard]] bool scalesFeatures() const { return features.lower != features.upper; }
  [[nodiscard]] bool scalesTargets() const { return targets.lower != targets.upper; }
  // One (minimum, maximum) per column; throws AppException before there are any.
  [[nodiscard]] const HostVector<zel::Interval>& featureBounds() const;
  // Of the columns.
  [[nodiscard]] const zelmag::FeatureNumbers& featureNumbers() const { return numbers; }
  [[nodiscard]] std::uint64_t featureCount() const { return numbers.count(); }
  [[nodiscard]] zelmag::BoundsByFeature boundsByFeature() const;
  // Features, ascending, that the record scales without having bounds of them, though the matrix
  // has values there; bounds of (0, 0) count as none.
  [[nodiscard]] std::vector<std::uint64_t> unknownFeatures(
      const zelmag::AbstractMatrix<T>& matrix) const;
  // Squared unscaled units per squared scaled unit of the targets.
  [[nodiscard]] double varianceFactor() const { return variance; }

  // Target value in scaled units, and back.
  [[nodiscard]] T scaledTarget(T label) const;
  [[nodiscard]] T unscaledTarget(T prediction) const;

 private:
  void setBounds(const zelmag::BoundsByFeature& newBounds);
  // Whether a file of its own may do without the lines of features whose bounds are both 0.
  [[nodiscard]] bool mayLeaveOutZeros() const;
  void updateVarianceFactor();

  zel::Interval features{0, 0};
  zel::Interval targets{0, 0};
  zel::Interval targetBounds{0, 0};
  zelmag::FeatureNumbers numbers;
  std::unique_ptr<HostVector<zel::Interval>> bounds;
  double variance = 1.0;
};

}  // namespace zelsvm
