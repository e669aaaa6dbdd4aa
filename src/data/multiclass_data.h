// The binary problem of one label pair of a data set with many labels.
#pragma once

#include <cstdint>
#include <memory>

#include "data/svm_data.h"

namespace zelsvm {

// The samples of the first label (+1), then those of the second (-1), copied from base. The row
// lists are looked at, not owned: they and base must outlive it.
template <typename T>
class MulticlassData : public SvmData<T> {
 public:
  MulticlassData(const SvmData<T>& base, const LabelPair& pair, zel::IndexList<>& first,
                 zel::IndexList<>& second)
      : firstRows(first.size(), first.data()), secondRows(second.size(), second.data()) {
    this->defineLabelPair(pair);
    zel::IndexList<> pairRows(first.size() + second.size());
    pairRows.copyFrom(first, 0, 0, first.size());
    pairRows.copyFrom(second, first.size(), 0, second.size());
    pairSamples = base.matrix().subset(pairRows);
    this->inheritWeights(base, pairRows);
  }

  [[nodiscard]] const zelmag::AbstractMatrix<T>& matrix() const override { return *pairSamples; }
  [[nodiscard]] T label(std::uint64_t i) const override { return i < firstRows.size() ? 1 : -1; }
  [[nodiscard]] signed char sign(std::uint64_t i) const override {
    return i < firstRows.size() ? 1 : -1;
  }

  // Row numbers in base.
  const zel::IndexList<> firstRows;
  const zel::IndexList<> secondRows;

 private:
  std::unique_ptr<zelmag::AbstractMatrix<T>> pairSamples;
};

}  // namespace zelsvm
