// A formulation's problem as the solver received and left it.
#pragma once

#include <string>
#include <vector>

#include "solver/smo_core_solver.h"
#include "solver/smo_nu_solver.h"
#include "support/captured_output.h"
#include "support/host_vectors.h"
#include "support/samples.h"
#include "support/tested_machine.h"
#include "training/classifier.h"
#include "training/one_class_svm.h"
#include "training/regressor.h"

namespace zeltest {

struct SolvedProblem {
  std::vector<double> start;  // multipliers at first
  std::vector<double> alpha;  // and at last
  std::vector<double> p;
  std::vector<int> y;
  double Cp = 0;
  double Cn = 0;
  std::vector<double> bounds;  // of the multipliers
  zelsvm::SmoSolution solution;
};

template <typename Solver>
class RecordingSolver : public Solver {
 public:
  using Solver::Solver;

  zelsvm::SmoSolution solve(zelsvm::SolverProblem<double>& problem,
                            const zelmag::AbstractMatrix<double>& samples) override {
    SolvedProblem record;
    record.start = valuesOf(problem.alpha);
    record.p = valuesOf(problem.p);
    for (const signed char sign : valuesOf(problem.signs)) record.y.push_back(sign);
    record.Cp = problem.Cp;
    record.Cn = problem.Cn;
    for (std::uint64_t k = 0; k < record.y.size(); ++k) record.bounds.push_back(problem.bound(k));
    record.solution = Solver::solve(problem, samples);
    record.alpha = valuesOf(problem.alpha);
    problems.push_back(record);
    return record.solution;
  }

  std::vector<SolvedProblem> problems;
};

struct Training {
  std::vector<SolvedProblem> problems;
  std::string text;  // what was printed

  [[nodiscard]] const SolvedProblem& only() const {
    EXPECT_EQ(problems.size(), 1);
    return problems.at(0);
  }
};

// A solver of its own for one training after the other.
template <typename Trainer, typename Solver>
class Trainings {
 public:
  explicit Trainings(const zelsvm::SvmParameters& parameters)
      : context(parameters, zelsvm::ParameterChecks::training, zeltest::testedMachine()) {}
  void run(const Samples& samples) {
    const CapturedOutput output;
    DataSet set(samples, context);
    zelsvm::GenericModel<double> model;
    static_cast<zelsvm::AbstractTrainer<double>&>(trainer).train(model, set.data());
  }
  [[nodiscard]] const std::vector<SolvedProblem>& problems() const { return solver.problems; }

 private:
  zelsvm::SvmContext<double> context;
  RecordingSolver<Solver> solver{context};
  Trainer trainer{context, solver};
};

template <typename Trainer, typename Solver>
Training trainWith(const zelsvm::SvmContext<double>& context, zelsvm::SvmData<double>& data,
                   zelsvm::GenericModel<double>& model) {
  CapturedOutput output;
  RecordingSolver<Solver> solver(context);
  Trainer trainer(context, solver);
  static_cast<zelsvm::AbstractTrainer<double>&>(trainer).train(model, data);
  return {solver.problems, output.text()};
}

// Trains as the context's SVM type says.
inline Training train(const zelsvm::SvmContext<double>& context, zelsvm::SvmData<double>& data,
                      zelsvm::GenericModel<double>& model) {
  using Core = zelsvm::SmoCoreSolver<double>;
  using Nu = zelsvm::SmoNuSolver<double>;
  switch (context.svmType) {
    case zelsvm::SVM_TYPE_NU_CLASSIFICATION:
      return trainWith<zelsvm::NuSvmClassifier<double>, Nu>(context, data, model);
    case zelsvm::SVM_TYPE_ONE_CLASS:
      return trainWith<zelsvm::OneClassSvm<double>, Core>(context, data, model);
    case zelsvm::SVM_TYPE_EPSILON_REGRESSION:
      return trainWith<zelsvm::CoreSvmRegressor<double>, Core>(context, data, model);
    case zelsvm::SVM_TYPE_NU_REGRESSION:
      return trainWith<zelsvm::NuSvmRegressor<double>, Nu>(context, data, model);
    default:
      return trainWith<zelsvm::CoreSvmClassifier<double>, Core>(context, data, model);
  }
}

// One training with parameters of its own; the model is dropped.
inline Training train(const Samples& samples, const zelsvm::SvmParameters& parameters,
                      const zelsvm::Machine& machine = testedMachine()) {
  zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training, machine);
  DataSet set(samples, context);
  zelsvm::GenericModel<double> model;
  return train(context, set.data(), model);
}

}  // namespace zeltest
