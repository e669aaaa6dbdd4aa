// Labels by class probabilities, from a sigmoid per pair of labels.
#pragma once

#include <cstdint>

#include "prediction/prediction_handlers.h"

namespace zelsvm {

// Writes the most probable label, the last in model order where several are.
template <typename T>
class BinaryProbabilityResolver : public AbstractPredictionHandler<T> {
 public:
  // Settings of JointProbability; pairwise probabilities keep minProbability from 0 and 1.
  explicit BinaryProbabilityResolver(std::uint32_t maxIterations = 100, T minProbability = 1e-7,
                                     T tolerance = 0.005)
      : maxIterations(maxIterations), minProbability(minProbability), tolerance(tolerance) {}

  // Throws AppException for a label pair without sigmoid or when the coupling fails.
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;
  // Receives each sample's probabilities in model label order.
  virtual void record(const HostVector<T>& /*probabilities*/, std::uint64_t /*sample*/) {}

 private:
  [[nodiscard]] T pairProbability(const Sigmoid& sigmoid, T decisionValue) const;

  std::uint32_t maxIterations;
  T minProbability;
  T tolerance;
};

// Keeps the probabilities of all labels, too.
template <typename T>
class MulticlassProbabilityEstimator : public BinaryProbabilityResolver<T> {
 public:
  // probabilities, one per label and sample, sample by sample, must outlive it.
  explicit MulticlassProbabilityEstimator(HostVector<T>& probabilities)
      : probabilities(&probabilities) {}

  void record(const HostVector<T>& sampleProbabilities, std::uint64_t sample) override;

 private:
  HostVector<T>* probabilities;
};

}  // namespace zelsvm
