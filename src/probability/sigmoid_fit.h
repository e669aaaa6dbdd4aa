// Maximum-likelihood fit of a sigmoid to decision values. Platt, "Probabilistic
// Outputs for Support Vector Machines" (1999); the minimisation as in Lin, Lin and Weng, "A Note on
// Platt's Probabilistic Outputs for Support Vector Machines", Machine Learning 68 (2007).
#pragma once

#include <cstdint>
#include <memory>

#include "base/vectors.h"
#include "data/svm_data.h"
#include "model/generic_model.h"
#include "platform/machine.h"

namespace zelsvm {

struct SigmoidFitSettings {
  std::uint32_t maxIterations = 100;
  double minStep = 1e-10;  // of the line search
  double ridge = 1e-12;    // added to the Hessian's diagonal
  double epsilon = 1e-5;   // largest derivative of a solution
};

// Newton's method with a halving line search.
template <typename T>
class SigmoidFit {
 public:
  explicit SigmoidFit(const Machine& machine, const SigmoidFitSettings& settings = {})
      : settings(settings), sums(machine.makeSigmoidSums()) {}

  // One decision value per sample; the data set's signs are the outcomes, which
  // count by their weights. Throws AppException when
  // the search fails or does not end.
  Sigmoid fit(const HostVector<T>& decisionValues, const SvmData<T>& data);

 private:
  struct Step {
    T dA;
    T dB;
    T slope;  // derivative of the objective along the step
  };

  T smoothTargets(const SvmData<T>& data);
  Sigmoid minimize(T B);
  [[nodiscard]] Step newtonStep(const SigmoidHessian<T>& derivatives) const;
  // Moves sigmoid and value along the step.
  void searchLine(Sigmoid& sigmoid, T& value, const Step& step);

  SigmoidFitSettings settings;
  std::unique_ptr<SigmoidSums> sums;
  HostVector<T> targets;
};

}  // namespace zelsvm
