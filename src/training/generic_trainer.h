// The trainer and the solver of one training run, chosen by the SVM type.
#pragma once

#include <memory>

#include "training/classifier.h"
#include "training/trainer.h"

namespace zelsvm {

template <typename T>
class GenericTrainer {
 public:
  // The context must outlive it. Throws AppException for an SVM type without a trainer.
  explicit GenericTrainer(const SvmContext<T>& context);
  virtual ~GenericTrainer() = default;

  void train(GenericModel<T>& model, SvmData<T>& data) { trainer->train(model, data); }
  // Of a classification: AbstractClassifier::solveTwoClass.
  SolvedProblem<T> solveTwoClass(GenericModel<T>& model, SvmData<T>& data) {
    return classifier->solveTwoClass(model, data);
  }
  void addHandler(AbstractBuildHandler<T>& handler) { trainer->addHandler(handler); }

 private:
  std::unique_ptr<AbstractSvmSolver<T>> solver;
  std::unique_ptr<AbstractTrainer<T>> trainer;
  AbstractClassifier<T>* classifier = nullptr;  // the trainer of a classification
};

}  // namespace zelsvm
