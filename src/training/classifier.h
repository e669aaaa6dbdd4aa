// Classification: the label dispatcher and its two formulations.
#pragma once

#include "training/trainer.h"

namespace zelsvm {

// Two-label problems go to the formulation; the smaller label is the positive class. One label
// needs no solver, and more than two are trained one against one.
template <typename T>
class AbstractClassifier : public AbstractTrainer<T> {
 public:
  using AbstractTrainer<T>::AbstractTrainer;

  void train(GenericModel<T>& model, SvmData<T>& data) override;
  // The data set's label pair is defined.
  void trainTwoClass(GenericModel<T>& model, SvmData<T>& data);
  // The same, except that the model receives only what the handlers find.
  virtual SolvedProblem<T> solveTwoClass(GenericModel<T>& model, SvmData<T>& data) = 0;

 protected:
  // A problem with the signs and weights of the data set's samples, and with the label weights.
  SolverProblem<T> signedProblem(const SvmData<T>& data) const;
  [[nodiscard]] T labelWeight(T label) const;

 private:
  static void trainOneLabel(GenericModel<T>& model, SvmData<T>& data, T label);
};

// C-classification. Cortes and Vapnik, "Support-Vector Networks", Machine Learning 20 (1995).
template <typename T>
class CoreSvmClassifier : public AbstractClassifier<T> {
 public:
  using AbstractClassifier<T>::AbstractClassifier;
  SolvedProblem<T> solveTwoClass(GenericModel<T>& model, SvmData<T>& data) override;
};

// Nu-classification. Schölkopf, Smola, Williamson and Bartlett, "New Support Vector Algorithms",
// Neural Computation 12 (2000). nu is a share of the samples' weight, that of their labels
// included.
template <typename T>
class NuSvmClassifier : public AbstractClassifier<T> {
 public:
  using AbstractClassifier<T>::AbstractClassifier;
  SolvedProblem<T> solveTwoClass(GenericModel<T>& model, SvmData<T>& data) override;
};

}  // namespace zelsvm
