#include "probability/joint_probability.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "model/generic_model.h"

namespace zelsvm {

template <typename T>
JointProbability<T>::JointProbability(std::uint64_t classes, std::uint32_t maxIterations,
                                      T tolerance)
    : classes(classes),
      maxSteps(std::max<std::uint64_t>(maxIterations, pairCount(classes))),
      threshold(tolerance / static_cast<T>(classes)),
      p(classes),
      previous(classes),
      coupling(classes * classes),
      diagonal(classes) {
  coupling.fill(0);
}

template <typename T>
const HostVector<T>& JointProbability<T>::couple(const HostVector<T>& pairwise) {
  fillCoupling(pairwise);
  p.fill(1 / static_cast<T>(classes));
  for (std::uint64_t i = 0; i < maxSteps; ++i) {
    step();
    if (takeChange() < threshold && i > 0) return p;
  }
  throw zel::AppException("Non-convergence in joint probability estimate.");
}

template <typename T>
void JointProbability<T>::fillCoupling(const HostVector<T>& pairwise) {
  diagonal.fill(0);
  std::uint64_t t = 0;
  for (std::uint64_t i = 0; i < classes; ++i)
    for (std::uint64_t j = i + 1; j < classes; ++j, ++t) {
      const T r = pairwise[t];
      coupling.set(i * classes + j, -r * (1 - r));
      coupling.set(j * classes + i, -r * (1 - r));
      diagonal.set(i, diagonal[i] + (1 - r) * (1 - r));
      diagonal.set(j, diagonal[j] + r * r);
    }
}

template <typename T>
T JointProbability<T>::rowProduct(std::uint64_t c) const {
  const T* const row = coupling.data() + c * classes;
  const T* const values = p.data();
  T sum = 0;
  for (std::uint64_t j = 0; j < classes; ++j) sum += row[j] * values[j];
  return sum;
}

template <typename T>
void JointProbability<T>::step() {
  T form = 0;
  for (std::uint64_t c = 0; c < classes; ++c) form += p[c] * (rowProduct(c) + p[c] * diagonal[c]);
  for (std::uint64_t c = 0; c < classes; ++c) {
    p.set(c, p[c] + (form - rowProduct(c)) / diagonal[c]);
    if (p[c] < 0) throw zel::AppException("Error in finding joint probability.");
  }
  normalize();
}

template <typename T>
void JointProbability<T>::normalize() {
  T sum = 0;
  for (std::uint64_t c = 0; c < classes; ++c) sum += p[c];
  if (sum == 0) throw zel::AppException("Error in summing joint probability.");
  for (std::uint64_t c = 0; c < classes; ++c) p.set(c, p[c] / sum);
}

template <typename T>
T JointProbability<T>::takeChange() {
  T change = 0;
  for (std::uint64_t c = 0; c < classes; ++c) change += std::fabs(p[c] - previous[c]);
  previous.copyFrom(p, 0, 0, classes);
  return change;
}

template class JointProbability<double>;

}  // namespace zelsvm
