#include "model/generic_model.h"

#include <cmath>

#include "base/errors.h"

namespace zelsvm {
namespace {

template <typename Member>
const auto& required(const Member& member, const char* message) {
  if (!member) throw zel::AppException(message);
  return *member;
}

}  // namespace

template <typename T>
const HostVector<T>& GenericModel<T>::labels() const {
  return required(labelValues, "SVM labels are not yet created.");
}

template <typename T>
const zel::IndexList<>& GenericModel<T>::classSizes() const {
  return required(sizes, "The SVM class sizes are not yet defined.");
}

template <typename T>
const zel::IndexList<>& GenericModel<T>::classStarts() const {
  return required(starts, "SVM vector map is not yet defined.");
}

template <typename T>
const HostVector<T>& GenericModel<T>::rho() const {
  return required(offsets, "The SVM rho's are not yet defined.");
}

template <typename T>
const HostVector<T>& GenericModel<T>::coefficients() const {
  return required(weights, "The SVM coefficients are not yet defined.");
}

template <typename T>
const zelmag::AbstractMatrix<T>& GenericModel<T>::vectors() const {
  if (!rows) throw zel::AppException("The SVM vectors are not yet defined.");
  return *rows;
}

template <typename T>
void GenericModel<T>::setClassSizes(zel::IndexList<>&& counts) {
  sizes = std::move(counts);
  starts.emplace(sizes->size() + 1);
  unsigned long long next = 0;
  for (std::uint64_t c = 0; c < sizes->size(); ++c) {
    (*starts)[c] = next;
    next += (*sizes)[c];
  }
  (*starts)[sizes->size()] = next;
}

template <typename T>
void GenericModel<T>::gatherVectors(const zelmag::AbstractMatrix<T>& trainingMatrix) {
  featureCount = trainingMatrix.features().count();
  if (!rows)
    rows = trainingMatrix.subset(required(vectorIndices, "The SVM vectors are not yet defined."));
}

template <typename T>
T GenericModel<T>::residualScale() const {
  return sigma > 0 ? sigma * std::sqrt(scale.varianceFactor()) : sigma;
}

template <typename T>
void GenericModel<T>::pairCoefficients(HostVector<T>& target, std::uint64_t a,
                                       std::uint64_t b) const {
  const std::uint64_t k = labels().size();
  if (a >= b || b >= k) throw zel::AppException("Unrecognized label pair");
  target.fill(0);
  const auto copyColumn = [&](std::uint64_t cls, std::uint64_t column) {
    for (std::uint64_t v = classStarts()[cls]; v < classStarts()[cls + 1]; ++v)
      target.set(v, coefficients()[v * (k - 1) + column]);
  };
  copyColumn(a, b - 1);
  copyColumn(b, a);
}

template class GenericModel<double>;

}  // namespace zelsvm
