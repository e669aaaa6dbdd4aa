// Large problems a working set at a time: block decomposition (Joachims, "Making Large-Scale SVM
// Learning Practical", 1999) with sets of violators chosen at random, each solved by the
// two-variable method on the set's own kernel matrix.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "parameters/svm_context.h"
#include "platform/set_machine.h"
#include "solver/chosen_set.h"
#include "solver/rough_sums.h"
#include "solver/subspace_step.h"
#include "solver/violators.h"

namespace zelsvm {

enum class SetEnding {
  converged,
  limit,  // of iterations
  left,   // sets gain nothing any more: the two-variable method may
};

class WorkingSets {
 public:
  // Tells by exception whether the groups' extremes leave a solution.
  using Check = std::function<void(const GroupState& first, const GroupState& second)>;

  // Both must outlive it.
  WorkingSets(const SvmContext<double>& context, SetMachine& machine)
      : context(&context), machine(&machine) {}

  // From the variables' feasible multipliers to the solution's; startsNear: the former are worth
  // keeping. Throws what check throws, zel::Stopped when the thread's sink asks for it, and what
  // the machine throws.
  SetEnding solve(const SetVariables& problem, const zelmag::AbstractMatrix<double>& samples,
                  bool startsNear, const Check& check);
  // Steps of the two-variable method.
  [[nodiscard]] std::uint64_t iterations() const { return steps; }
  // The gradient Qα + p of the last solve's variables.
  void readGradient(std::span<double> gradient) const;

 private:
  void begin(SetPrecision rowPrecision);
  void placeStart();
  void addAllRows();
  void solveSet();
  void runSet(double tolerance);
  [[nodiscard]] std::uint64_t nextBatch() const;
  void countSteps(std::uint64_t count);
  void addChanges();
  void addRows();
  void useFullRows();
  void watchPrecision();
  void stepInSubspace();
  [[nodiscard]] bool isExact();
  [[nodiscard]] bool hasStalled();
  [[nodiscard]] double objective() const;
  void lookOut() const;

  const SvmContext<double>* context;
  const zelmag::AbstractMatrix<double>* samples = nullptr;
  SetMachine* machine;
  SetVariables variables{};
  std::vector<double> sums;  // K (y α)
  Violators violators;
  std::uint64_t steps = 0;
  std::uint32_t sets = 0;
  ChosenSet set;
  std::vector<WeightedRow> rows;

  bool isRough = false;  // the sums are
  RoughSums rough;
  std::uint64_t madeBefore = 0;  // rows of another precision

  SetPrecision precision = SetPrecision::single;
  double innerTolerance = 0;

  SubspaceStep subspace;
  std::vector<SubspaceStep::Change> changes;  // of the last set
  std::vector<double> sumsBefore;             // that set
  bool isDrifted = false;                     // the sums may be, by more than rounding
  bool isChecked = false;                     // they have been made anew

  double lowestObjective = 0;
  double closestGap = 0;
  unsigned idleSets = 0;     // since the objective fell or the gap was smallest
  unsigned distantSets = 0;  // since the latter
};

}  // namespace zelsvm
