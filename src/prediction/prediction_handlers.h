// What happens with decision values once they are there.
#pragma once

#include "base/vectors.h"
#include "model/generic_model.h"

namespace zelsvm {

template <typename T>
class AbstractPredictionHandler {
 public:
  virtual ~AbstractPredictionHandler() = default;

  // output holds n predictions, one per test sample. decisionValues holds n values per label pair,
  // pair after pair (a positive one favours the pair's first label); for regression it is output
  // itself.
  virtual void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                      const GenericModel<T>& model) = 0;
};

// Throws AppException where a decision value is NaN, naming the first such test sample, counted
// from 1. An infinite value still has a side.
template <typename T>
class DecisionCheck : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;
};

// Keeps the decision values of the last prediction for whoever wants to see them.
template <typename T>
class DecisionRecord : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;

  HostVector<T> values;
};

// The decision values themselves as predictions of a model of two labels.
template <typename T>
class BinaryDecisionResolver : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;
};

// The prediction for a sample whose decision values are all 0.
enum class Undecided { keepsPrediction, hasFirstLabel };

// One-against-one voting. Knerr, Personnaz and Dreyfus, "Single-layer learning revisited" (1990).
// Writes the label with the most votes, the earliest in model order where several have as many. A
// decision value of 0 is no vote.
template <typename T>
class MulticlassResolver : public AbstractPredictionHandler<T> {
 public:
  explicit MulticlassResolver(Undecided undecided = Undecided::keepsPrediction)
      : undecided(undecided) {}

  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;

 private:
  Undecided undecided;
};

}  // namespace zelsvm
