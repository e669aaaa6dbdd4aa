// The distinct labels of a data set and the samples that carry them.
#pragma once

#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "data/svm_data.h"

namespace zelsvm {

// Labels are compared exactly and stand in ascending order; within a label, samples do. No label is
// NaN.
template <typename T>
class SvmLabelClassifier {
 public:
  SvmLabelClassifier(const SvmData<T>& data, std::uint64_t samples);
  SvmLabelClassifier(SvmLabelClassifier&&) noexcept = default;
  virtual ~SvmLabelClassifier() = default;

  [[nodiscard]] const std::vector<T>& labels() const { return distinct; }
  [[nodiscard]] std::uint64_t count(std::uint64_t label) const {
    return starts[label + 1] - starts[label];
  }
  // Sample numbers of the label at this position; a view into this object.
  [[nodiscard]] zel::IndexList<> samplesOf(std::uint64_t label) {
    return {count(label), grouped.data() + starts[label]};
  }

 private:
  std::vector<T> distinct;
  std::vector<std::uint64_t> starts;
  zel::IndexList<> grouped;
};

}  // namespace zelsvm
