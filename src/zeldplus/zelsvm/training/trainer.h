// One training problem: from a data set to a model, by one run of a solver.
#pragma once

#include <cstdint>
#include <vector>

#include "zeldplus/zelsvm/engine/rssolver.h"
#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/generic_model.h"
#include "zeldplus/zelsvm/training/build_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

// What a formulation hands to the solver, one entry per variable: multipliers, shrink mark and
// sign, linear term. All multipliers and terms start at 0.
template <typename T>
struct SolverProblem {
  explicit SolverProblem(std::uint64_t variables) : alpha(variables), y(variables), p(variables) {
    alpha.fill(0);
    p.fill(0);
  }

  HostVector<T> alpha;
  HostVector<char2> y;
  HostVector<T> p;
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
  SmoSolution solve(SvmData<T>& data, SolverProblem<T>& problem) {
    SmoSolution solution;
    solver->solve(solution, data, problem.alpha, problem.y, problem.p);
    return solution;
  }

  const SvmContext<T>* context;
  AbstractSvmSolver<T>* solver;
  std::vector<AbstractBuildHandler<T>*> handlers;
};

// The report line that every formulation prints.
void printSolution(const SmoSolution& solution);

}  // namespace zelsvm::inline ZEL_PLATFORM
