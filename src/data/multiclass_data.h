// The binary problem of one label pair of a data set with many labels.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "data/svm_data.h"

namespace zelsvm {

// The samples of the first label (+1), then those of the second (-1), copied from base. The row
// lists are looked at, not owned: they and base must outlive it. pairNumber: in the base's start.
template <typename T>
class MulticlassData : public SvmData<T> {
 public:
  MulticlassData(const SvmData<T>& base, const LabelPair& pair, std::uint64_t pairNumber,
                 zel::IndexList<>& first, zel::IndexList<>& second)
      : firstRows(first.size(), first.data()), secondRows(second.size(), second.data()) {
    this->defineLabelPair(pair);
    zel::IndexList<> pairRows(first.size() + second.size());
    pairRows.copyFrom(first, 0, 0, first.size());
    pairRows.copyFrom(second, first.size(), 0, second.size());
    pairSamples = base.matrix().subset(pairRows);
    this->inheritWeights(base, pairRows);
    if (base.start().empty()) return;
    const auto start = base.start().subspan(pairNumber * base.sampleCount());
    std::vector<T> own;
    for (std::uint64_t i = 0; i < pairRows.size(); ++i) own.push_back(start[pairRows[i]]);
    this->setStart(std::move(own));
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
