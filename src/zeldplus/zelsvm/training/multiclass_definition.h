// One-against-one training: the pair problems of a data set and their combination into one model.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/model/generic_model.h"
#include "zeldplus/zelsvm/training/label_classifier.h"
#include "zeldplus/zelsvm/training/pair_view.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Owns the pair views, in pair order. The data set must outlive it.
template <typename T>
class MulticlassDefinition {
 public:
  // Throws AppException when the solutions of all pairs or the model's coefficients are more than
  // memory can hold.
  MulticlassDefinition(SvmData<T>& data, SvmLabelClassifier<T>&& classifier);
  virtual ~MulticlassDefinition() = default;

  [[nodiscard]] std::uint64_t pairCount() const { return views.size(); }
  // How many samples a pair has.
  [[nodiscard]] std::uint64_t sampleCount(std::uint64_t pair) const;
  [[nodiscard]] const zelmag::AbstractMatrix<T>& matrix() const { return data->matrix(); }
  // Makes a pair's view, anew if need be: where its training is to leave the solution. Threads may
  // call at the same time, each for another pair.
  SvmData<T>& makeView(std::uint64_t pair);
  // Fills the model from the solutions of all pairs. Throws AppException without any support
  // vector.
  void combine(GenericModel<T>& model);

 private:
  void requireMemory() const;
  [[nodiscard]] T multiplier(std::uint64_t label, std::uint64_t other,
                             std::uint64_t position) const;
  void collectClass(std::uint64_t label, std::vector<unsigned long long>& indices,
                    std::vector<T>& coefficients);

  SvmData<T>* data;
  SvmLabelClassifier<T> classifier;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> places;  // of the pairs' labels
  std::vector<std::unique_ptr<PairView<T>>> views;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
