#include "zeldplus/zelsvm/training/one_class_svm.h"

#include <algorithm>
#include <utility>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/zelsvm/training/model_extraction.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
void OneClassSvm<T>::train(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  const std::uint64_t n = data.sampleCount();
  SolverProblem<T> problem(n);
  problem.y.fill({0, 1});
  // Whole multipliers only: the fraction that nu n leaves is not part of the problem.
  const auto whole = static_cast<std::uint64_t>(this->context->nu * static_cast<T>(n));
  std::fill_n(problem.alpha.data(), std::min(whole, n), T{1});
  this->solver->Cp = 1;
  this->solver->Cn = 1;
  const SmoSolution solution = this->solve(data, problem);
  if (zel::isVerbose()) printSolution(solution);
  data.defineLabelPair({1, -1});
  extractTwoClass(model, data, std::move(problem), solution);
}

template class OneClassSvm<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
