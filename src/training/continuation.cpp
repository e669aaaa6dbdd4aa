#include "training/continuation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace zelsvm {
namespace {

// Next to a bound is at the bound: rounding must not make free variables of bounded ones.
template <typename T>
T cut(T a, T bound) {
  constexpr T near = 1e-12;
  if (!(a > near * bound)) return 0;
  return bound - a > near * bound ? a : bound;
}

// The variables of one sign.
template <typename T>
class Side {
 public:
  Side(SolverProblem<T>& problem, int sign) : problem(&problem), sign(sign) {}

  [[nodiscard]] T sum() const {
    T total = 0;
    forEach([&](std::uint64_t k) { total += problem->alpha[k]; });
    return total;
  }

  void take(std::span<const T> coefficients) {
    forEach([&](std::uint64_t k) {
      problem->alpha.set(k, std::max<T>(sign * coefficients[k % coefficients.size()], 0));
    });
  }

  void scale(T factor) {
    forEach([&](std::uint64_t k) { problem->alpha.set(k, problem->alpha[k] * factor); });
  }

  void cutToBounds() {
    forEach([&](std::uint64_t k) { problem->alpha.set(k, cut(problem->alpha[k], bound(k))); });
  }

  // The free variables move first, all by the same part of their room, then others one by one.
  void moveSum(T target) {
    T left = target - sum();
    T all = 0;
    forEach([&](std::uint64_t k) { all += isFree(k) ? room(k, left) : 0; });
    if (all > 0) {
      const T part = std::clamp<T>(left / all, -1, 1);
      forEach([&](std::uint64_t k) {
        if (isFree(k)) move(k, part * room(k, left));
      });
      left -= part * all;
    }
    // What rounding leaves is no reason to free a bounded variable.
    if (std::abs(left) <= 1e-12 * std::abs(target)) return;
    forEach([&](std::uint64_t k) {
      const T step = std::clamp(left, -room(k, T{-1}), room(k, T{1}));
      move(k, step);
      left -= step;
    });
  }

 private:
  template <typename Use>
  void forEach(const Use& use) const {
    for (std::uint64_t k = 0; k < problem->signs.size(); ++k)
      if (problem->signs[k] == sign) use(k);
  }
  [[nodiscard]] T bound(std::uint64_t k) const { return problem->bound(k); }
  [[nodiscard]] bool isFree(std::uint64_t k) const {
    return problem->alpha[k] > 0 && problem->alpha[k] < bound(k);
  }
  // How far the variable may go in a step's direction.
  [[nodiscard]] T room(std::uint64_t k, T direction) const {
    return direction > 0 ? bound(k) - problem->alpha[k] : problem->alpha[k];
  }
  void move(std::uint64_t k, T step) {
    problem->alpha.set(k, cut(problem->alpha[k] + step, bound(k)));
  }

  SolverProblem<T>* problem;
  int sign;
};

}  // namespace

template <typename T>
void continueFrom(SolverProblem<T>& problem, std::span<const T> coefficients, Unit unit) {
  Side<T> sides[] = {{problem, 1}, {problem, -1}};
  T sums[] = {sides[0].sum(), sides[1].sum()};
  for (int s = 0; s < 2; ++s) {
    sides[s].take(coefficients);
    const T given = sides[s].sum();
    if (unit == Unit::any && given > 0) sides[s].scale(sums[s] / given);
    sides[s].cutToBounds();
  }
  if (problem.startsAtZero) sums[0] = sums[1] = std::min(sides[0].sum(), sides[1].sum());
  for (int s = 0; s < 2; ++s) sides[s].moveSum(sums[s]);
  problem.startsAtZero = problem.startsAtZero && sums[0] == 0;
  problem.startsNear = true;
}

template void continueFrom(SolverProblem<double>&, std::span<const double>, Unit);

}  // namespace zelsvm
