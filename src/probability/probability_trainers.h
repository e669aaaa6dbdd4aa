// The probability parameters of a model: what a training finds out before its solver runs.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "parameters/svm_context.h"
#include "prediction/prediction_handlers.h"
#include "probability/sigmoid_fit.h"
#include "training/build_handler.h"

namespace zelsvm {

// Mean of the absolute residuals below five standard deviations of the Laplace distribution that
// they all suggest, -1 when there is none. Residuals count by their weights, all alike without.
template <typename T>
T laplaceScale(const HostVector<T>& residuals, std::span<const T> weights);

inline constexpr std::uint64_t probabilityFolds = 5;

// Fits to decision values of all samples, each by a machine trained without it: cross-validation
// without build handlers.
template <typename T>
class AbstractProbabilityTrainer : public AbstractBuildHandler<T> {
 public:
  // The context must outlive it.
  explicit AbstractProbabilityTrainer(const SvmContext<T>& context) : context(&context) {}

  // One per sample, for its place in the folds.
  [[nodiscard]] std::uint64_t randomNumbers(std::uint64_t samples) const override {
    return samples;
  }

 protected:
  // resolver, if any, turns a fold's decision values into its predictions.
  HostVector<T> outOfFoldValues(const SvmData<T>& data,
                                AbstractPredictionHandler<T>* resolver) const;

 private:
  const SvmContext<T>* context;
};

// Fits the sigmoid of the data set's label pair; a pair that has one keeps it.
template <typename T>
class BinaryProbabilityTrainer : public AbstractProbabilityTrainer<T> {
 public:
  explicit BinaryProbabilityTrainer(const SvmContext<T>& context)
      : AbstractProbabilityTrainer<T>(context), sigmoidFit(context.machine) {}
  void build(GenericModel<T>& model, SvmData<T>& data) override;
  [[nodiscard]] std::unique_ptr<AbstractBuildHandler<T>> sibling(
      const SvmContext<T>& context) const override {
    return std::make_unique<BinaryProbabilityTrainer>(context);
  }

 private:
  BinaryDecisionResolver<T> resolver;
  SigmoidFit<T> sigmoidFit;
};

// Sets the model's sigma, the Laplace distribution of a regression's residuals.
template <typename T>
class NumericProbabilityTrainer : public AbstractProbabilityTrainer<T> {
 public:
  using AbstractProbabilityTrainer<T>::AbstractProbabilityTrainer;
  void build(GenericModel<T>& model, SvmData<T>& data) override;
  [[nodiscard]] std::unique_ptr<AbstractBuildHandler<T>> sibling(
      const SvmContext<T>& context) const override {
    return std::make_unique<NumericProbabilityTrainer>(context);
  }
};

// The one for the context's problem kind.
template <typename T>
class GenericProbabilityTrainer : public AbstractBuildHandler<T> {
 public:
  // The context must outlive it.
  explicit GenericProbabilityTrainer(const SvmContext<T>& context);
  void build(GenericModel<T>& model, SvmData<T>& data) override { trainer->build(model, data); }
  [[nodiscard]] std::unique_ptr<AbstractBuildHandler<T>> sibling(
      const SvmContext<T>& context) const override {
    return trainer->sibling(context);
  }
  [[nodiscard]] std::uint64_t randomNumbers(std::uint64_t samples) const override {
    return trainer->randomNumbers(samples);
  }

 private:
  std::unique_ptr<AbstractProbabilityTrainer<T>> trainer;
};

}  // namespace zelsvm
