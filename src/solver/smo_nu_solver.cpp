#include "solver/smo_nu_solver.h"

#include <cmath>
#include <limits>

#include "base/errors.h"

namespace zelsvm {
namespace {

template <typename T>
bool isFeasible(const SmoSelection<T>& selection) {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  return selection.index != noIndex && selection.beta.up != -infinity &&
         selection.beta.low != infinity;
}

// Offset of one class: the mean gradient of its free variables, or the middle of what the bounded
// ones leave open.
template <typename T>
T classOffset(const GradientBounds<T>& bounds) {
  if (bounds.count > 0) return bounds.sum / static_cast<T>(bounds.count);
  return (bounds.minLower + bounds.maxUpper) / 2;
}

}  // namespace

template <typename T>
SmoNuSolver<T>::SmoNuSolver(const SvmContext<T>& context) : SmoBaseSolver<T>(context, true) {}

template <typename T>
T SmoNuSolver<T>::violationOf(const SmoSelection<T>& positive,
                              const SmoSelection<T>& negative) const {
  if (!isFeasible(positive) || !isFeasible(negative))
    throw zel::AppException("Error: there is no feasible solution for the nu value.");
  return std::fmax(positive.beta.up - positive.beta.low, negative.beta.up - negative.beta.low);
}

template <typename T>
T SmoNuSolver<T>::calculateRho(T& r, const GradientBounds<T>& positive,
                               const GradientBounds<T>& negative) const {
  const T positiveOffset = classOffset(positive);
  const T negativeOffset = classOffset(negative);
  r = (positiveOffset + negativeOffset) / 2;
  return (positiveOffset - negativeOffset) / 2;
}

template class SmoNuSolver<double>;

}  // namespace zelsvm
