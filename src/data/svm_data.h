// What training and prediction see of a data set: a matrix, a label per sample and, for a binary
// problem, the side on which each sample lies.
#pragma once

#include <cstdint>
#include <numeric>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"

namespace zelsvm {

// The two labels of a binary problem; first is the +1 side.
struct LabelPair {
  double first;
  double second;
  auto operator<=>(const LabelPair&) const = default;
};

template <typename T>
class SvmData {
 public:
  SvmData() = default;
  SvmData(const SvmData&) = delete;
  SvmData& operator=(const SvmData&) = delete;
  virtual ~SvmData() = default;

  [[nodiscard]] virtual const zelmag::AbstractMatrix<T>& matrix() const = 0;
  // Label or target value of sample i.
  [[nodiscard]] virtual T label(std::uint64_t i) const = 0;
  // +1 where the label equals the pair's first, else -1 (NaN too).
  [[nodiscard]] virtual signed char sign(std::uint64_t i) const {
    return label(i) == labelPair().first ? 1 : -1;
  }
  [[nodiscard]] virtual bool hasLabelPair() const { return pair.has_value(); }
  // Throws AppException when there is none.
  [[nodiscard]] virtual LabelPair labelPair() const;
  // Throws AppException when there is one already.
  virtual void defineLabelPair(const LabelPair& newPair);

  [[nodiscard]] std::uint64_t sampleCount() const { return matrix().rows(); }

  // What each sample counts, 0 or more; empty where each counts 1.
  [[nodiscard]] std::span<const T> weights() const { return sampleWeights; }
  void setWeights(std::vector<T> values) { sampleWeights = std::move(values); }
  [[nodiscard]] T weight(std::uint64_t i) const {
    return sampleWeights.empty() ? 1 : sampleWeights[i];
  }
  [[nodiscard]] T totalWeight() const {
    return sampleWeights.empty() ? static_cast<T>(sampleCount())
                                 : std::accumulate(sampleWeights.begin(), sampleWeights.end(), T{});
  }

  // Dual coefficients to begin the training at: one pair of labels after the other, and in each all
  // samples; empty for the usual start.
  [[nodiscard]] std::span<const T> start() const { return startCoefficients; }
  void setStart(std::vector<T> values) { startCoefficients = std::move(values); }

 protected:
  // Takes the weights of some samples of another data set behind those that are there.
  void inheritWeights(const SvmData& base, const zel::IndexList<>& rows) {
    if (base.weights().empty()) return;
    for (std::uint64_t i = 0; i < rows.size(); ++i) sampleWeights.push_back(base.weight(rows[i]));
  }

  std::optional<LabelPair> pair;

 private:
  std::vector<T> sampleWeights;
  std::vector<T> startCoefficients;
};

// A data set with a label vector of its own.
template <typename T>
class SimpleData : public SvmData<T> {
 public:
  [[nodiscard]] virtual HostVector<T>& labels() = 0;
};

// Samples as read from a file. Looks at a matrix and labels owned elsewhere.
template <typename T>
class UserData : public SimpleData<T> {
 public:
  UserData(const zelmag::AbstractMatrix<T>& samples, HostVector<T>& labels)
      : samples(&samples), labelValues(labels.size(), labels.data()) {}

  [[nodiscard]] const zelmag::AbstractMatrix<T>& matrix() const override { return *samples; }
  [[nodiscard]] T label(std::uint64_t i) const override { return labelValues[i]; }
  [[nodiscard]] HostVector<T>& labels() override { return labelValues; }

 private:
  const zelmag::AbstractMatrix<T>* samples;
  HostVector<T> labelValues;
};

// Truncates every label toward zero in place. Throws AppException at the first label that is not a
// whole number of 64 bits.
template <typename T>
void requireIntegerLabels(HostVector<T>& labels);

// Throws AppException naming the first sample, counted from 1, with a label that is infinite or
// NaN. The others stay as they are, but for the sign of a 0.
template <typename T>
void requireFiniteLabels(HostVector<T>& labels);

}  // namespace zelsvm
