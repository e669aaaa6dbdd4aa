// One training problem: from a data set to a model, by one run of a solver.
#pragma once

#include <cstdint>
#include <vector>

#include "base/output/console.h"
#include "model/generic_model.h"
#include "parameters/svm_context.h"
#include "solver/smo_solver.h"
#include "training/build_handler.h"
#include "training/continuation.h"

namespace zelsvm {

// A problem with the multipliers that solve it.
template <typename T>
struct SolvedProblem {
  SolverProblem<T> problem;
  SmoSolution solution;
};

template <typename T>
class AbstractTrainer {
 public:
  // Both must outlive the trainer.
  AbstractTrainer(const SvmContext<T>& context, AbstractSvmSolver<T>& solver)
      : context(&context), solver(&solver) {}
  AbstractTrainer(const AbstractTrainer&) = delete;
  AbstractTrainer& operator=(const AbstractTrainer&) = delete;
  virtual ~AbstractTrainer() = default;

  // Fills what the model does not hold yet. Throws AppException when the problem has no solution.
  virtual void train(GenericModel<T>& model, SvmData<T>& data) = 0;

  // Handlers run in order before each problem; not owned.
  void addHandler(AbstractBuildHandler<T>& handler) { handlers.push_back(&handler); }

 protected:
  void runHandlers(GenericModel<T>& model, SvmData<T>& data) {
    for (auto* handler : handlers) handler->build(model, data);
  }
  SmoSolution solve(const SvmData<T>& data, SolverProblem<T>& problem,
                    Unit startUnit = Unit::multipliers) {
    if (!data.start().empty()) continueFrom(problem, data.start(), startUnit);
    return solver->solve(problem, data.matrix());
  }

  const SvmContext<T>* context;
  AbstractSvmSolver<T>* solver;
  std::vector<AbstractBuildHandler<T>*> handlers;
};

// The report lines that every formulation prints.
inline void printSolution(const SmoSolution& solution) {
  zel::printMessage("obj = %g, rho = %g\nnSV = %lu, nBSV = %lu\n", solution.obj, solution.rho,
                    solution.nSV, solution.nBSV);
}

}  // namespace zelsvm
