#include "solver/smo_core_solver.h"

#include <limits>

#include "base/errors.h"

namespace zelsvm {

template <typename T>
SmoCoreSolver<T>::SmoCoreSolver(const SvmContext<T>& context) : SmoBaseSolver<T>(context, false) {}

template <typename T>
T SmoCoreSolver<T>::violationOf(const SmoSelection<T>& selection,
                                const SmoSelection<T>& /*second*/) const {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  const auto [up, low] = selection.beta;
  if (selection.index == noIndex || up == -infinity || low == infinity)
    throw zel::AppException("Failed to optimize the svm.");
  return up - low;
}

template class SmoCoreSolver<double>;

}  // namespace zelsvm
