#include "training/one_class_svm.h"

#include <algorithm>
#include <cmath>

#include "base/output/console.h"
#include "training/model_extraction.h"

namespace zelsvm {

// The sum of the multipliers. Of samples that count by whole numbers only whole multipliers: the
// fraction that nu leaves is not part of the problem then.
template <typename T>
T OneClassSvm<T>::budget(const SvmData<T>& data) const {
  const T sum = this->context->nu * data.totalWeight();
  const auto weights = data.weights();
  const bool whole =
      std::all_of(weights.begin(), weights.end(), [](T w) { return w == std::trunc(w); });
  return whole ? std::trunc(sum) : sum;
}

template <typename T>
void OneClassSvm<T>::train(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  const std::uint64_t n = data.sampleCount();
  SolvedProblem<T> solved{SolverProblem<T>(n, 1, data.weights()), {}};
  SolverProblem<T>& problem = solved.problem;
  problem.signs.fill(1);
  T left = budget(data);
  for (std::uint64_t i = 0; i < n; ++i) {
    const T a = std::min(left, problem.bound(i));
    problem.alpha.set(i, a);
    left -= a;
  }
  solved.solution = this->solve(data, problem);
  if (zel::isVerbose()) printSolution(solved.solution);
  data.defineLabelPair({1, -1});
  extractTwoClass(model, data, data.labelPair(), solved);
}

template class OneClassSvm<double>;

}  // namespace zelsvm
