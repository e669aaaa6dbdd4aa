// Class probabilities from the probabilities of pairs of classes. After Wu, Lin and Weng,
// "Probability Estimates for Multi-class Classification by Pairwise Coupling", Journal of Machine
// Learning Research 5 (2004).
#pragma once

#include <cstdint>

#include "base/vectors.h"

namespace zelsvm {

// Serves one sample after the other with the same work vectors. A step changes
// one probability after the other: p_c grows by (p'Qp - q_c) / Q_cc, where q_c is the product of
// row c of the coupling matrix Q and p, the diagonal left out. p'Qp keeps its value from the start
// of the step.
template <typename T>
class JointProbability {
 public:
  // Takes maxIterations steps, or one per pair of classes if these are more, until all changes of a
  // step add up to less than tolerance / classes.
  JointProbability(std::uint64_t classes, std::uint32_t maxIterations, T tolerance);

  // pairwise holds, in pair order, the probabilities between 0 and 1 that the pair's first class
  // beats its second. Returns the classes' probabilities, which hold until the next call. Throws
  // AppException when the steps find none.
  const HostVector<T>& couple(const HostVector<T>& pairwise);

 private:
  void fillCoupling(const HostVector<T>& pairwise);
  [[nodiscard]] T rowProduct(std::uint64_t c) const;
  void step();
  void normalize();
  // What the last step changed.
  T takeChange();

  std::uint64_t classes;
  std::uint64_t maxSteps;
  T threshold;
  HostVector<T> p;
  HostVector<T> previous;
  HostVector<T> coupling;  // classes x classes, 0 on the diagonal
  HostVector<T> diagonal;
};

}  // namespace zelsvm
