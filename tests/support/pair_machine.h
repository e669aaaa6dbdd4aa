// The machine under test where the two-variable method solves problems of any size.
#pragma once

#include "support/tested_machine.h"

namespace zeltest {

class PairMachine : public zelsvm::Machine {
 public:
  [[nodiscard]] std::string name() const override { return whole.name(); }
  [[nodiscard]] std::unique_ptr<zelsvm::SolverMachine> makeSolver(zelsvm::SVM_KERNEL kernel,
                                                                  bool twoGroups) const override {
    return whole.makeSolver(kernel, twoGroups);
  }
  [[nodiscard]] std::unique_ptr<zelsvm::PredictorMachine> makePredictor(
      const zelsvm::DecisionTask& task) const override {
    return whole.makePredictor(task);
  }
  [[nodiscard]] std::unique_ptr<zelsvm::SigmoidSums> makeSigmoidSums() const override {
    return whole.makeSigmoidSums();
  }
  [[nodiscard]] unsigned solversAtOnce(const zelmag::AbstractMatrix<double>& samples,
                                       const zelsvm::KernelSettings& kernel,
                                       std::uint64_t cacheMegabytes,
                                       const zelsvm::PairLoad& load) const override {
    return whole.solversAtOnce(samples, kernel, cacheMegabytes, load);
  }

 private:
  const zelsvm::Machine& whole = testedMachine();
};

inline const zelsvm::Machine& pairMachine() {
  static const PairMachine machine;
  return machine;
}

}  // namespace zeltest
