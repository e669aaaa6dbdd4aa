// What the methods ask of the machine that they run on. The methods above decide what is done; the
// processor (platform/host) and CUDA (platform/cuda) each do it in their own way. Nothing else
// forks by platform. No function here prints.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "data/matrix.h"
#include "platform/kernel_settings.h"
#include "platform/set_machine.h"
#include "rules/kernel_type.h"
#include "rules/sigmoid_hessian.h"
#include "rules/smo_records.h"

namespace zelsvm {

// min ½ α'Qα + p'α subject to sums of y_k α_k and 0 <= α_k <= C_k, with Q_kj = y_k y_j K(x_k, x_j).
// The arrays have an entry per variable; where there are twice as many variables as samples,
// variable k + samples stands for sample k, too. What it points to outlives the solve.
struct SolverTask {
  const zelmag::AbstractMatrix<double>* samples;
  KernelSettings kernel;
  std::span<const signed char> signs;  // y: 1 or -1
  std::span<const double> start;       // feasible α
  bool startsAtZero = false;           // start is 0 throughout: p already is the gradient
  std::span<const double> linearTerm;  // p
  double Cp;                           // C_k of variables with positive sign
  double Cn;                           // and of the others
  std::uint64_t cacheMegabytes;        // for kernel rows
  unsigned cacheSharers = 1;           // solvers that share that memory
  std::span<const double> factors{};   // by sample, of its variables' bounds; empty: all are 1
};

// What the two-variable method does in one iteration; index noIndex for no pair.
struct PairStep {
  unsigned i;
  unsigned j;
  double deltaI;  // added to the multipliers
  double deltaJ;
};

// What a solver asks for. One solve at a time; α and the gradient Qα + p live on the machine from
// begin() to end(). What any function here throws is a std::bad_alloc for memory that is not there
// or a RuntimeException for another failure of the machine.
class SolverMachine {
 public:
  SolverMachine() = default;
  SolverMachine(const SolverMachine&) = delete;
  SolverMachine& operator=(const SolverMachine&) = delete;
  virtual ~SolverMachine() = default;

  // All variables are active. Makes the start gradient, unless the task starts at zero, and calls
  // columnsAdded after each of the blocks that it goes by.
  virtual void begin(const SolverTask& task, const std::function<void()>& columnsAdded) = 0;
  // Releases what the solve needed; memory that the next one can use stays.
  virtual void end() = 0;

  // The two-variable method. Its searches look at active variables only, its gradient is that of
  // all. With two groups (the nu formulations) the signs are searched apart, and selections are
  // those of the positive and of the negative group; else both are the same.
  virtual void activate(std::span<const unsigned> ascendingVariables) = 0;
  virtual void select(SmoSelection<double>& selection, SmoSelection<double>& second) = 0;
  // Chooses the second index and moves the pair's multipliers; the gradient follows with the next
  // call of updateGradient().
  virtual PairStep movePair(const SmoSelection<double>& selection,
                            const SmoSelection<double>& second) = 0;
  virtual void updateGradient() = 0;
  // marks[k] becomes 1 for each active variable that lies at a bound beyond the selection's
  // extremes.
  virtual void markShrinkable(const SmoSelection<double>& selection,
                              const SmoSelection<double>& second, std::span<signed char> marks) = 0;

  // α and the gradient of all variables; either may be left out by an empty span.
  virtual void read(std::span<double> multipliers, std::span<double> gradient) = 0;
  // The part of the kernel rows asked for since begin() that the cache held; 0 before the first.
  [[nodiscard]] virtual double cacheHitRate() const = 0;
};

// The decision functions of a model. With k classes a vector has k - 1 coefficients side by side,
// those of the other classes in ascending order, and there is a function per pair of classes in
// pair order; a regression has the classes {0, n, n} and one function. What it points to outlives
// the predictor.
struct DecisionTask {
  const zelmag::AbstractMatrix<double>* vectors;
  KernelSettings kernel;
  std::vector<std::uint64_t> classStarts;  // among the vectors; the last is their number
  std::span<const double> coefficients;
  std::span<const double> rho;  // one per function
};

// What a predictor asks for. Several predictors may work at the same time, each on its own thread.
class PredictorMachine {
 public:
  PredictorMachine() = default;
  PredictorMachine(const PredictorMachine&) = delete;
  PredictorMachine& operator=(const PredictorMachine&) = delete;
  virtual ~PredictorMachine() = default;

  // Test samples that are best decided together; the matrix has at least the vectors' columns.
  virtual std::uint64_t blockSize(const zelmag::AbstractMatrix<double>& test) = 0;
  // values[f * count + c] = sum_v coefficient_v K(vector_v, x) - rho_f of function f and sample
  // first + c.
  virtual void decide(const zelmag::AbstractMatrix<double>& test, std::uint64_t first,
                      std::uint64_t count, double* values) = 0;
};

// Sums over decision values that a sigmoid is fitted to (rules/sigmoid_rules.h).
class SigmoidSums {
 public:
  SigmoidSums() = default;
  SigmoidSums(const SigmoidSums&) = delete;
  SigmoidSums& operator=(const SigmoidSums&) = delete;
  virtual ~SigmoidSums() = default;

  // One target per decision value, and one weight unless all are 1; what is given stays where it is
  // until the last sum is made.
  virtual void assign(std::span<const double> decisionValues, std::span<const double> targets,
                      std::span<const double> weights) = 0;
  // Weighted negative log likelihood under 1 / (1 + exp(A d + B)), and its derivatives.
  virtual double loss(double A, double B) = 0;
  virtual SigmoidHessian<double> derivatives(double A, double B) = 0;
};

// The label pairs of a training.
struct PairLoad {
  std::uint64_t pairs = 0;
  std::uint64_t largest = 0;       // samples of the largest pair
  double kernelValues = 0;         // in the kernel matrices of all
  bool sumsStartGradient = false;  // each solve begins with multipliers above 0
};

// A machine, ready to be used by several threads.
class Machine {
 public:
  Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  virtual ~Machine() = default;

  // What the tools' first line names, without the word GPU.
  [[nodiscard]] virtual std::string name() const = 0;
  // twoGroups: the two signs are searched apart.
  [[nodiscard]] virtual std::unique_ptr<SolverMachine> makeSolver(SVM_KERNEL kernel,
                                                                  bool twoGroups) const = 0;
  // Null where the machine has none: there the two-variable method solves problems of any size.
  [[nodiscard]] virtual std::unique_ptr<SetMachine> makeSetMachine() const { return nullptr; }
  [[nodiscard]] virtual std::unique_ptr<PredictorMachine> makePredictor(
      const DecisionTask& task) const = 0;
  [[nodiscard]] virtual std::unique_ptr<SigmoidSums> makeSigmoidSums() const = 0;
  // So many solvers should share the pairs, each on a thread of its own; 1 for one after the other.
  [[nodiscard]] virtual unsigned solversAtOnce(const zelmag::AbstractMatrix<double>& samples,
                                               const KernelSettings& kernel,
                                               std::uint64_t cacheMegabytes,
                                               const PairLoad& load) const = 0;
};

}  // namespace zelsvm
