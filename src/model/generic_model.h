// A trained support vector machine in memory.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"
#include "data/svm_data.h"
#include "data/svm_scale.h"
#include "model/solve_report.h"
#include "rules/pair_order.h"

namespace zelsvm {

// P(first label | decision value d) = 1 / (1 + exp(A d + B)).
struct Sigmoid {
  double A;
  double B;
};

// Calls use(pair index, label pair) for every pair of labels in order.
template <typename T, typename Use>
void forEachLabelPair(const HostVector<T>& labels, Use use) {
  std::uint64_t t = 0;
  for (std::uint64_t i = 0; i < labels.size(); ++i)
    for (std::uint64_t j = i + 1; j < labels.size(); ++j) use(t++, LabelPair{labels[i], labels[j]});
}

// Members are filled once, by training or by reading a model file; an accessor asked for a member
// that is not there yet throws AppException. With k labels: rho holds k (k - 1) / 2 offsets in pair
// order (one for regression), coefficients k - 1 numbers per support vector (one for regression),
// those of the other classes in ascending order; support vectors are grouped by class in label
// order.
template <typename T>
class GenericModel {
 public:
  GenericModel() = default;
  GenericModel(const GenericModel&) = delete;
  GenericModel& operator=(const GenericModel&) = delete;
  virtual ~GenericModel() = default;

  [[nodiscard]] const HostVector<T>& labels() const;
  [[nodiscard]] const zel::IndexList<>& classSizes() const;
  [[nodiscard]] const zel::IndexList<>& classStarts() const;
  [[nodiscard]] const HostVector<T>& rho() const;
  [[nodiscard]] const HostVector<T>& coefficients() const;
  [[nodiscard]] const zelmag::AbstractMatrix<T>& vectors() const;
  [[nodiscard]] bool hasVectors() const { return rows != nullptr; }
  [[nodiscard]] bool hasLabels() const { return labelValues.has_value(); }

  void setLabels(HostVector<T>&& values) { labelValues = std::move(values); }
  // Derives the start offsets too.
  void setClassSizes(zel::IndexList<>&& counts);
  void setRho(HostVector<T>&& values) { offsets = std::move(values); }
  void setCoefficients(HostVector<T>&& values) { weights = std::move(values); }
  // Row numbers of the support vectors in the training data.
  void setIndices(zel::IndexList<>&& indices) { vectorIndices = std::move(indices); }
  // None for a model without them.
  [[nodiscard]] std::span<const unsigned long long> indices() const {
    if (!vectorIndices) return {};
    return {vectorIndices->data(), vectorIndices->size()};
  }
  void setVectors(std::unique_ptr<zelmag::AbstractMatrix<T>> vectors) { rows = std::move(vectors); }
  // Gathers the support vectors' rows from the training matrix, unless they are there.
  void gatherVectors(const zelmag::AbstractMatrix<T>& trainingMatrix);

  // Sigma in the units of unscaled targets.
  [[nodiscard]] T residualScale() const;

  // Test data with fewer features must be widened. Listed features have no such number, as data are
  // moved to their columns.
  [[nodiscard]] std::uint64_t testWidth() const {
    return vectors().features().isListed() ? 0 : featureCount;
  }

  // Writes the coefficient of every support vector for the pair of labels at positions a < b, 0 for
  // those of other labels. Throws AppException for any other positions.
  void pairCoefficients(HostVector<T>& target, std::uint64_t a, std::uint64_t b) const;

  SvmScale<T> scale;
  std::uint64_t featureCount = 0;
  T sigma = 0;  // Laplace scale of the residuals of scaled targets, 0 for none, below 0 for unknown
  bool probability = false;               // carries probability parameters
  std::map<LabelPair, Sigmoid> sigmoids;  // by label pair
  std::vector<SolveReport> solves;        // in pair order; none where nothing was solved
  // The support vectors before they were scaled; null where they are as they were given, or where
  // nobody knows.
  std::unique_ptr<zelmag::AbstractMatrix<T>> givenVectors;
  std::uint32_t seed = 0;  // where the random numbers of the training began

 private:
  std::optional<HostVector<T>> labelValues;
  std::optional<zel::IndexList<>> sizes;
  std::optional<zel::IndexList<>> starts;
  std::optional<HostVector<T>> offsets;
  std::optional<HostVector<T>> weights;
  std::optional<zel::IndexList<>> vectorIndices;
  std::unique_ptr<zelmag::AbstractMatrix<T>> rows;
};

}  // namespace zelsvm
