#include "training/one_class_svm.h"

#include <algorithm>

#include "base/output/console.h"
#include "training/model_extraction.h"

namespace zelsvm {

template <typename T>
void OneClassSvm<T>::train(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  const std::uint64_t n = data.sampleCount();
  SolvedProblem<T> solved{SolverProblem<T>(n, 1), {}};
  SolverProblem<T>& problem = solved.problem;
  problem.signs.fill(1);
  // Whole multipliers only: the fraction that nu n leaves is not part of the problem.
  const auto whole = static_cast<std::uint64_t>(this->context->nu * static_cast<T>(n));
  std::fill_n(problem.alpha.data(), std::min(whole, n), T{1});
  solved.solution = this->solve(data, problem);
  if (zel::isVerbose()) printSolution(solved.solution);
  data.defineLabelPair({1, -1});
  extractTwoClass(model, data, data.labelPair(), solved);
}

template class OneClassSvm<double>;

}  // namespace zelsvm
