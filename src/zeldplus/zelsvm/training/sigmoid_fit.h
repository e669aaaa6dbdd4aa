// Maximum-likelihood fit of a sigmoid to decision values, on the device. Platt, "Probabilistic
// Outputs for Support Vector Machines" (1999); the minimisation as in Lin, Lin and Weng, "A Note on
// Platt's Probabilistic Outputs for Support Vector Machines", Machine Learning 68 (2007).
#pragma once

#include <cstdint>

#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/model/generic_model.h"
#include "zeldplus/zelsvm/training/sigmoid_hessian.h"

namespace zelsvm::inline ZEL_PLATFORM {

struct SigmoidFitSettings {
  std::uint32_t maxIterations = 100;
  double minStep = 1e-10;  // of the line search
  double ridge = 1e-12;    // added to the Hessian's diagonal
  double epsilon = 1e-5;   // largest derivative of a solution
};

// Newton's method with a halving line search. Device vectors are kept from fit to fit.
template <typename T>
class SigmoidFit {
 public:
  explicit SigmoidFit(const SigmoidFitSettings& settings = {});

  // One decision value per sample; the data set's signs are the outcomes. Throws AppException when
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
  T objective(const Sigmoid& sigmoid);
  SigmoidHessian<T> derivatives(const Sigmoid& sigmoid);

  SigmoidFitSettings settings;
  zel::DeviceVector<T> objectiveBlocks;
  zel::DeviceVector<SigmoidHessian<T>> hessianBlocks;
  unsigned objectiveLimit;
  unsigned hessianLimit;
  HostVector<T> objectiveHost;
  HostVector<SigmoidHessian<T>> hessianHost;
  HostVector<T> targets;
  zel::DeviceVector<T> deviceDecisions;
  zel::DeviceVector<T> deviceTargets;
  unsigned samples = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
