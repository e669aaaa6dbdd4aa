#include "zeldplus/zelsvm/engine/smo_core_solver.h"

#include <limits>

#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
SmoCoreSolver<T>::SmoCoreSolver(const SvmContext<T>& params) : SmoBaseSolver<T>(params, false) {}

template <typename T>
T SmoCoreSolver<T>::selectWorkingSet(SmoSelection<T>& selection, SmoSelection<T>& second) {
  this->steps->select(selection, second);
  constexpr T infinity = std::numeric_limits<T>::infinity();
  const auto [up, low] = selection.beta;
  if (selection.index == noIndex || up == -infinity || low == infinity)
    throw zel::AppException("Failed to optimize the svm.");
  return up - low;
}

template <typename T>
SmoPair<T> SmoCoreSolver<T>::findDelta(const HostVector<char2>& /*status*/,
                                       const SmoSelection<T>& selection,
                                       const SmoSelection<T>& second) {
  const T* const rowI = this->kernel.getRow(selection.index);
  const unsigned j = this->secondIndex(selection, second, rowI, rowI);
  return {selection.index, j, rowI, this->kernel.getRow(j)};
}

template class SmoCoreSolver<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
