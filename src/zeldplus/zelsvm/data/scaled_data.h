// A data set seen through a scale record.
#pragma once

#include <cstdint>
#include <memory>

#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/data/svm_scale.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Holds a scaled copy of the source's matrix, or looks at the source's own where features are not
// scaled, and a copy of the labels in scaled units. The source's matrix must outlive it.
template <typename T>
class ScaledData : public SimpleData<T> {
 public:
  ScaledData(SvmData<T>& data, const SvmScale<T>& scale)
      : source(&data.matrix()), scaledLabels(source->rows()) {
    if (scale.scalesFeatures())
      scaledSamples = source->scaledCopy(scale.xRange(), scale.featureBounds());
    for (std::uint64_t i = 0; i < source->rows(); ++i)
      scaledLabels.set(i, scale.scaledTarget(data.label(i)));
  }

  [[nodiscard]] zelmag::AbstractMatrix<T>& matrix() override {
    return scaledSamples ? *scaledSamples : *source;
  }
  [[nodiscard]] T label(std::uint64_t i) const override { return scaledLabels[i]; }
  [[nodiscard]] HostVector<T>& labels() override { return scaledLabels; }

 private:
  zelmag::AbstractMatrix<T>* source;
  std::unique_ptr<zelmag::AbstractMatrix<T>> scaledSamples;
  HostVector<T> scaledLabels;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
