// Starts from earlier solutions, as searches and growing data have them. DeCoste and Wagstaff,
// "Alpha Seeding for Support Vector Machines", KDD (2000).
#pragma once

#include <span>

#include "solver/smo_solver.h"

namespace zelsvm {

// What coefficients count in; any: in an unknown multiple of the multipliers.
enum class Unit { multipliers, any };

// Lets the problem, which has a usual start, begin at these dual coefficients instead: α y by
// sample, of a regression α - α*. They may be those of another problem. Multipliers are cut to
// their bounds; then the sums by sign become those of the usual start, or where that is 0 the
// smaller of the two.
template <typename T>
void continueFrom(SolverProblem<T>& problem, std::span<const T> coefficients, Unit unit);

}  // namespace zelsvm
