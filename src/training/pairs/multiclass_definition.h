// One-against-one training: the pair problems of a data set and their combination into one model.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "data/multiclass_data.h"
#include "data/svm_data.h"
#include "model/generic_model.h"
#include "training/label_classifier.h"

namespace zelsvm {

// Keeps the pairs' solutions, in pair order. The data set must outlive it.
template <typename T>
class MulticlassDefinition {
 public:
  // Throws AppException when the solutions of all pairs or the model's coefficients are more than
  // memory can hold.
  MulticlassDefinition(const SvmData<T>& data, SvmLabelClassifier<T>&& classifier);
  virtual ~MulticlassDefinition() = default;

  [[nodiscard]] std::uint64_t pairCount() const { return solutions.size(); }
  // How many samples a pair has.
  [[nodiscard]] std::uint64_t sampleCount(std::uint64_t pair) const;
  [[nodiscard]] const zelmag::AbstractMatrix<T>& matrix() const { return data->matrix(); }
  [[nodiscard]] bool hasStart() const { return !data->start().empty(); }
  // A pair's problem: a copy of its samples. Threads may call at the same time.
  [[nodiscard]] MulticlassData<T> problem(std::uint64_t pair);
  // Takes a pair's multipliers, those of the first label's samples first, and what else was found.
  // Threads may call at the same time, each for another pair.
  void takeSolution(std::uint64_t pair, HostVector<T>&& alpha, const SmoSolution& found);
  // Fills the model from the solutions of all pairs. Throws AppException without any support
  // vector.
  void combine(GenericModel<T>& model);

 private:
  void requireMemory() const;
  [[nodiscard]] T multiplier(std::uint64_t label, std::uint64_t other,
                             std::uint64_t position) const;
  void collectClass(std::uint64_t label, std::vector<unsigned long long>& indices,
                    std::vector<T>& coefficients);

  struct Solution {
    HostVector<T> alpha;
    T rho = 0;
    SolveReport report;
  };

  const SvmData<T>* data;
  SvmLabelClassifier<T> classifier;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> places;  // of the pairs' labels
  std::vector<Solution> solutions;
};

}  // namespace zelsvm
