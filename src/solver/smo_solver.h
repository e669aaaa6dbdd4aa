// Sequential minimal optimisation of min ½ α'Qα + p'α subject to y'α = const, 0 <= α_k <= C_k, with
// Q_kj = y_k y_j K(x_k, x_j). Platt, "Fast Training of Support Vector Machines using Sequential
// Minimal Optimization" (1998), with second-order working sets (Fan, Chen and Lin, JMLR 6, 2005)
// and the gradient of all variables kept up to date, so that shrinking never reconstructs it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"
#include "parameters/svm_context.h"
#include "platform/machine.h"
#include "rules/smo_records.h"
#include "solver/stall_watch.h"
#include "solver/working_sets.h"

namespace zelsvm {

// What a formulation asks a solver for, an entry per variable: there are as many variables as
// samples, or twice as many. All multipliers and terms start at 0.
template <typename T>
struct SolverProblem {
  // factors: of the samples' bounds, empty where all are 1.
  SolverProblem(std::uint64_t variables, T bound, std::span<const T> factors)
      : alpha(variables),
        signs(variables),
        p(variables),
        Cp(bound),
        Cn(bound),
        factors(factors.begin(), factors.end()) {
    alpha.fill(0);
    p.fill(0);
  }

  [[nodiscard]] T bound(std::uint64_t k) const {
    const T c = signs[k] > 0 ? Cp : Cn;
    return factors.empty() ? c : c * factors[k % factors.size()];
  }

  HostVector<T> alpha;            // a feasible start, which the solution replaces
  HostVector<signed char> signs;  // y
  HostVector<T> p;                // the linear term
  T Cp;                           // upper bound of variables with positive sign
  T Cn;                           // and of the others
  std::vector<T> factors;         // by sample, of its variables' bounds; empty: all are 1
  bool startsAtZero = false;      // no multiplier of the start is above 0
  bool startsNear = false;        // the start is worth keeping
};

template <typename T>
class AbstractSvmSolver {
 public:
  AbstractSvmSolver() = default;
  AbstractSvmSolver(const AbstractSvmSolver&) = delete;
  AbstractSvmSolver& operator=(const AbstractSvmSolver&) = delete;
  virtual ~AbstractSvmSolver() = default;

  // Leaves the solution's multipliers in the problem. Throws AppException when no step can be
  // found, zel::Stopped when the thread's sink asks for it, and what the machine throws.
  virtual SmoSolution solve(SolverProblem<T>& problem,
                            const zelmag::AbstractMatrix<T>& samples) = 0;
};

// Gradient entries of one sign class by where the multipliers lie.
template <typename T>
struct GradientBounds {
  T minLower;  // minimum over those at 0
  T maxUpper;  // maximum over those at their bound
  T sum = 0;   // over the free ones
  std::uint64_t count = 0;
};

// What the core and the nu solver share: loop, shrinking and the result.
template <typename T>
class SmoBaseSolver : public AbstractSvmSolver<T> {
 public:
  // nu: the two label signs are searched apart. The context must outlive the solver. Throws
  // AppException unless C > 0.
  SmoBaseSolver(const SvmContext<T>& context, bool nu);

  SmoSolution solve(SolverProblem<T>& problem, const zelmag::AbstractMatrix<T>& samples) override;

 protected:
  // The largest violation of the machine's selections (core: both are the same; nu: positive and
  // negative class). Throws AppException where a selection has found nothing.
  virtual T violationOf(const SmoSelection<T>& selection, const SmoSelection<T>& second) const = 0;
  virtual T calculateRho(T& r, const GradientBounds<T>& positive,
                         const GradientBounds<T>& negative) const;

 private:
  // Where a solve stands between its batches of iterations.
  struct Progress {
    std::uint64_t iterations = 0;
    std::uint64_t active = 0;
    T gap = 0;
    PairStep step{noIndex, noIndex, 0, 0};  // the last one
    bool converged = false;
    bool stuck = false;  // further steps change or gain nothing
    bool unshrunk = false;
    bool shrinking = false;
  };

  [[nodiscard]] bool goesBySets(const zelmag::AbstractMatrix<T>& samples) const;
  bool solveBySets(Progress& progress, SolverProblem<T>& problem,
                   const zelmag::AbstractMatrix<T>& samples);
  void solveByPairs(Progress& progress, SolverProblem<T>& problem,
                    const zelmag::AbstractMatrix<T>& samples);
  void begin(const SolverProblem<T>& problem, const zelmag::AbstractMatrix<T>& samples);
  void iterate(Progress& progress, SolverProblem<T>& problem);
  std::uint64_t runBatch(Progress& progress);
  T select();
  void step(Progress& progress);
  void activateAll(Progress& progress);
  void shrink(Progress& progress);
  void lookOut(const Progress& progress, std::uint64_t iterations);
  [[nodiscard]] bool hasStalled(StallWatch& watch, std::uint64_t iterations,
                                SolverProblem<T>& problem);
  void readBack(SolverProblem<T>& problem);
  [[nodiscard]] T gapOf(const SolverProblem<T>& problem) const;
  [[nodiscard]] SmoSolution collectSolution(const SolverProblem<T>& problem) const;

  const SvmContext<T>* context;
  bool nu;
  std::unique_ptr<SolverMachine> machine;
  std::unique_ptr<SetMachine> setMachine;  // null where there is none
  std::uint64_t variableCount = 0;
  SmoSelection<T> selection{};
  SmoSelection<T> second{};
  HostVector<signed char> marks;  // of shrunk variables
  HostVector<unsigned> active;
  HostVector<T> gradient;  // as last read
};

}  // namespace zelsvm
