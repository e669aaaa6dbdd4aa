#include "training/classifier.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/errors.h"
#include "base/output/console.h"
#include "platform/portable_functions.h"
#include "training/label_classifier.h"
#include "training/model_extraction.h"
#include "training/pairs/multiclass_definition.h"
#include "training/pairs/pair_training.h"

namespace zelsvm {

template <typename T>
void AbstractClassifier<T>::train(GenericModel<T>& model, SvmData<T>& data) {
  if (data.hasLabelPair()) return trainTwoClass(model, data);
  SvmLabelClassifier<T> classifier(data, data.sampleCount());
  const auto& labels = classifier.labels();
  if (labels.size() == 1) return trainOneLabel(model, data, labels[0]);
  if (labels.size() == 2) {
    data.defineLabelPair({labels[0], labels[1]});
    return trainTwoClass(model, data);
  }
  MulticlassDefinition<T> pairs(data, std::move(classifier));
  PairTraining<T>(*this->context, *this, this->handlers, pairs, model).run();
  pairs.combine(model);
}

// Every prediction of such a model is the label; its probability is as sure as the sigmoid fit
// would be of samples that all lie on one side.
template <typename T>
void AbstractClassifier<T>::trainOneLabel(GenericModel<T>& model, SvmData<T>& data, T label) {
  HostVector<T> labels(2);
  labels.set(0, label);
  labels.set(1, -label);
  const T samples = data.totalWeight();
  model.sigmoids.emplace(LabelPair{label, -label}, Sigmoid{0, portableLog(1 / (samples + 1))});
  HostVector<T> rho(1);
  rho.set(0, -1);
  HostVector<T> coefficients(1);
  coefficients.set(0, 0);
  zel::IndexList<> sizes(2);
  sizes[0] = 1;
  sizes[1] = 0;
  zel::IndexList<> indices(1);
  indices[0] = 0;
  model.setLabels(std::move(labels));
  model.setRho(std::move(rho));
  model.setCoefficients(std::move(coefficients));
  model.setClassSizes(std::move(sizes));
  model.setIndices(std::move(indices));
  model.gatherVectors(data.matrix());
}

template <typename T>
void AbstractClassifier<T>::trainTwoClass(GenericModel<T>& model, SvmData<T>& data) {
  const SolvedProblem<T> solved = solveTwoClass(model, data);
  extractTwoClass(model, data, data.labelPair(), solved);
}

template <typename T>
T AbstractClassifier<T>::labelWeight(T label) const {
  const auto weight = this->context->weights.find(label);
  return weight == this->context->weights.end() ? 1 : weight->second;
}

template <typename T>
SolverProblem<T> AbstractClassifier<T>::signedProblem(const SvmData<T>& data) const {
  SolverProblem<T> problem(data.sampleCount(), this->context->C, data.weights());
  for (std::uint64_t i = 0; i < problem.signs.size(); ++i)
    problem.signs.set(i, static_cast<signed char>(data.sign(i) > 0 ? 1 : -1));
  const LabelPair pair = data.labelPair();
  problem.Cp = this->context->C * labelWeight(pair.first);
  problem.Cn = this->context->C * labelWeight(pair.second);
  return problem;
}

template <typename T>
SolvedProblem<T> CoreSvmClassifier<T>::solveTwoClass(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  SolverProblem<T> problem = this->signedProblem(data);
  problem.p.fill(-1);
  problem.startsAtZero = true;
  const SmoSolution solution = this->solve(data, problem);
  if (zel::isVerbose()) {
    if (problem.Cp == problem.Cn)
      zel::printMessage("nu = %g\n", solution.alphaSum / (problem.Cp * data.totalWeight()));
    printSolution(solution);
  }
  return {std::move(problem), solution};
}

template <typename T>
SolvedProblem<T> NuSvmClassifier<T>::solveTwoClass(GenericModel<T>& model, SvmData<T>& data) {
  this->runHandlers(model, data);
  const std::uint64_t n = data.sampleCount();
  SolverProblem<T> problem = this->signedProblem(data);
  const LabelPair pair = data.labelPair();
  const auto weight = [&, ofFirst = this->labelWeight(pair.first),
                       ofSecond = this->labelWeight(pair.second)](std::uint64_t i) {
    return data.weight(i) * (problem.signs[i] > 0 ? ofFirst : ofSecond);
  };
  T total = 0;
  for (std::uint64_t i = 0; i < n; ++i) total += weight(i);
  T positiveBudget = this->context->nu * total * 0.5;
  T negativeBudget = positiveBudget;
  for (std::uint64_t i = 0; i < n; ++i) {
    T& budget = problem.signs[i] > 0 ? positiveBudget : negativeBudget;
    const T a = std::min(budget, weight(i));
    problem.alpha.set(i, a);
    budget -= a;
  }
  SmoSolution solution = this->solve(data, problem, Unit::any);
  const T r = solution.r;
  // Without a margin there is nothing to scale by.
  if (r == 0 || !std::isfinite(r)) throw zel::AppException("Failed to optimize the svm.");
  solution.obj /= r * r;
  solution.rho /= r;
  for (std::uint64_t i = 0; i < n; ++i) problem.alpha.set(i, problem.alpha[i] / r);
  if (zel::isVerbose()) {
    zel::printMessage("C = %g\n", 1 / r);
    printSolution(solution);
  }
  return {std::move(problem), solution};
}

template class AbstractClassifier<double>;
template class CoreSvmClassifier<double>;
template class NuSvmClassifier<double>;

}  // namespace zelsvm
