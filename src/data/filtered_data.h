// A subset of the rows of another data set.
#pragma once

#include <cstdint>
#include <memory>

#include "data/svm_data.h"

namespace zelsvm {

// Holds a copy of the selected rows; base and rows must outlive it. It inherits the base's label
// pair unless it is given its own.
template <typename T>
class FilteredData : public SvmData<T> {
 public:
  FilteredData(const SvmData<T>& base, const zel::IndexList<>& rows)
      : subset(base.matrix().subset(rows)), base(&base), rows(&rows) {
    this->inheritWeights(base, rows);
  }

  [[nodiscard]] const zelmag::AbstractMatrix<T>& matrix() const override { return *subset; }
  [[nodiscard]] T label(std::uint64_t i) const override { return base->label((*rows)[i]); }
  [[nodiscard]] signed char sign(std::uint64_t i) const override {
    return this->pair ? SvmData<T>::sign(i) : base->sign((*rows)[i]);
  }
  [[nodiscard]] bool hasLabelPair() const override { return this->pair || base->hasLabelPair(); }
  [[nodiscard]] LabelPair labelPair() const override {
    return this->pair ? *this->pair : base->labelPair();
  }

 private:
  std::unique_ptr<zelmag::AbstractMatrix<T>> subset;
  const SvmData<T>* base;
  const zel::IndexList<>* rows;
};

}  // namespace zelsvm
