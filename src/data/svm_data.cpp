#include "data/svm_data.h"

#include <cmath>

#include "base/errors.h"

namespace zelsvm {

template <typename T>
LabelPair SvmData<T>::labelPair() const {
  if (!pair) throw zel::AppException("The label pair is not yet defined.");
  return *pair;
}

template <typename T>
void SvmData<T>::defineLabelPair(const LabelPair& newPair) {
  if (pair) throw zel::AppException("The label pair has already been defined.");
  pair = newPair;
}

// Whole numbers are those that a 64-bit integer holds.
constexpr double labelLimit = 9223372036854775808.0;

template <typename T>
void requireIntegerLabels(HostVector<T>& labels) {
  for (std::uint64_t i = 0; i < labels.size(); ++i) {
    const T whole = std::trunc(labels[i]);
    if (!(labels[i] == whole && std::abs(whole) < labelLimit))
      throw zel::AppException("Only integer values are supported for classification.");
    labels.set(i, whole + 0.0);  // never -0
  }
}

template <typename T>
void requireFiniteLabels(HostVector<T>& labels) {
  for (std::uint64_t i = 0; i < labels.size(); ++i) {
    if (!std::isfinite(labels[i]))
      zel::throwAppException("The label of sample %lu is not a finite number.", i + 1);
    labels.set(i, labels[i] + 0.0);  // never -0
  }
}

template class SvmData<double>;
template class SimpleData<double>;
template class UserData<double>;
template void requireIntegerLabels(HostVector<double>&);
template void requireFiniteLabels(HostVector<double>&);

}  // namespace zelsvm
