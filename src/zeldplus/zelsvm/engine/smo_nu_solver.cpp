#include "zeldplus/zelsvm/engine/smo_nu_solver.h"

#include <cmath>
#include <limits>

#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {
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
SmoNuSolver<T>::SmoNuSolver(const SvmContext<T>& params) : SmoBaseSolver<T>(params, true) {}

template <typename T>
T SmoNuSolver<T>::selectWorkingSet(SmoSelection<T>& positive, SmoSelection<T>& negative) {
  this->steps->select(positive, negative);
  if (!isFeasible(positive) || !isFeasible(negative))
    throw zel::AppException("Error: there is no feasible solution for the nu value.");
  return std::fmax(positive.beta.up - positive.beta.low, negative.beta.up - negative.beta.low);
}

template <typename T>
SmoPair<T> SmoNuSolver<T>::findDelta(const HostVector<char2>& status,
                                     const SmoSelection<T>& positive,
                                     const SmoSelection<T>& negative) {
  const T* const positiveRow = this->kernel.getRow(positive.index);
  const T* const negativeRow = this->kernel.getRow(negative.index);
  const unsigned j = this->secondIndex(positive, negative, positiveRow, negativeRow);
  const bool isPositive = status.at(j)->y > 0;
  return {isPositive ? positive.index : negative.index, j, isPositive ? positiveRow : negativeRow,
          this->kernel.getRow(j)};
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

}  // namespace zelsvm::inline ZEL_PLATFORM
