// A data set seen through a scale record.
#pragma once

#include <cstdint>
#include <memory>

#include "data/svm_data.h"
#include "data/svm_scale.h"

namespace zelsvm {

// Holds the labels in scaled units and a copy of the source's matrix, scaled and with its columns
// in place. Where scaling changes nothing it looks at the source's own matrix, which must outlive
// it.
template <typename T>
class ScaledData : public SimpleData<T> {
 public:
  // Columns go to where the record has its bounds.
  ScaledData(const SvmData<T>& data, const SvmScale<T>& scale)
      : ScaledData(data, scale,
                   scale.scalesFeatures() ? scale.featureNumbers() : data.matrix().features()) {}

  // Columns go to where these features have theirs. If the record scales features, its own come
  // first; features below its last that it does not know are left out.
  ScaledData(const SvmData<T>& data, const SvmScale<T>& scale,
             const zelmag::FeatureNumbers& columns)
      : source(&data.matrix()), scaledLabels(source->rows()) {
    using zelmag::Unlisted;
    samples = zelmag::movedTo(columns, *source,
                              scale.scalesFeatures() ? Unlisted::leftOut : Unlisted::appended);
    if (scale.scalesFeatures())
      samples = (samples ? *samples : *source).scaledCopy(scale.xRange(), scale.featureBounds());
    this->setWeights({data.weights().begin(), data.weights().end()});
    for (std::uint64_t i = 0; i < source->rows(); ++i)
      scaledLabels.set(i, scale.scaledTarget(data.label(i)));
  }

  [[nodiscard]] const zelmag::AbstractMatrix<T>& matrix() const override {
    return samples ? *samples : *source;
  }
  [[nodiscard]] T label(std::uint64_t i) const override { return scaledLabels[i]; }
  [[nodiscard]] HostVector<T>& labels() override { return scaledLabels; }

 private:
  const zelmag::AbstractMatrix<T>* source;
  std::unique_ptr<zelmag::AbstractMatrix<T>> samples;
  HostVector<T> scaledLabels;
};

}  // namespace zelsvm
