// n-fold cross-validation: a prediction of every sample by a model that has not seen it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "prediction/evaluation.h"
#include "prediction/prediction_handlers.h"
#include "training/folds.h"
#include "training/generic_trainer.h"

namespace zelsvm {

// Stone, "Cross-Validatory Choice and Assessment of Statistical Predictions", JRSS B 36 (1974).
template <typename T>
class SvmCrossTrainer {
 public:
  // The context must outlive it.
  explicit SvmCrossTrainer(const SvmContext<T>& context) : context(&context), trainer(context) {}
  SvmCrossTrainer(const SvmCrossTrainer&) = delete;
  SvmCrossTrainer& operator=(const SvmCrossTrainer&) = delete;
  virtual ~SvmCrossTrainer() = default;

  // From now on every run measures its predictions against the data set's targets, for each fold
  // and over all.
  void evaluateAgainst(const SvmData<T>& data);
  // Run before each two-class, one-class or regression training of a fold; not owned.
  void addBuildHandler(AbstractBuildHandler<T>& handler) { trainer.addHandler(handler); }
  // Turn a fold's decision values into predictions; not owned.
  void addPredictionHandler(AbstractPredictionHandler<T>& handler) { handlers.push_back(&handler); }

  // Fills predictions, one entry per sample. A fold that leaves one sample to train on predicts
  // that sample's target, for its first held-out sample only; a fold that leaves none predicts
  // nothing. Samples that count nothing are predicted by the folds in turn, which are those that
  // the others alone would have.
  void run(HostVector<T>& predictions, const SvmData<T>& data, std::uint64_t folds);

  // The measures over all samples at entry 0, those of the folds, empty ones left out, behind it.
  // Throws AppException without evaluation or for vectors that are too short.
  void collectResults(HostVector<T>& primary, HostVector<T>& secondary) const;

 private:
  using Evaluation = GenericEvaluationHandler<T>;
  struct Measures {
    T primary;
    T secondary;
  };

  static Measures measuresOf(const Evaluation& evaluation);
  void runFold(HostVector<T>& predictions, const SvmData<T>& data, const Fold& fold);
  void predictFold(HostVector<T>& heldOutPredictions, SvmData<T>& trainingData,
                   const SvmData<T>& heldOutData, Evaluation* evaluation);

  const SvmContext<T>* context;
  GenericTrainer<T> trainer;
  std::unique_ptr<Evaluation> overall;
  std::vector<Measures> foldMeasures;
  std::vector<AbstractPredictionHandler<T>*> handlers;
};

}  // namespace zelsvm
