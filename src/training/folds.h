// How samples are cut into folds.
#pragma once

#include <cstdint>
#include <span>

#include "base/vectors.h"

namespace zelsvm {

// A permutation of 0 … count - 1 by exchanges with zel::nextRandom, whose range keeps those of long
// lists local. Fisher and Yates, "Statistical Tables" (1938).
zel::IndexList<> shuffledSamples(std::uint64_t count);

// The samples of one fold and all others, each in ascending order.
struct Fold {
  zel::IndexList<> heldOut;
  zel::IndexList<> training;
};

// Fold f of folds: what stands from f * n / folds up to the start of the next fold in the
// permutation of n samples. Some are empty where there are more folds than samples.
Fold foldOf(const zel::IndexList<>& permutation, std::uint64_t f, std::uint64_t folds);

// The samples whose weight is above 0: all where there are no weights.
class CountingSamples {
 public:
  CountingSamples() = default;
  CountingSamples(std::span<const double> weights, std::uint64_t samples);

  [[nodiscard]] std::uint64_t count() const { return counting.size(); }
  [[nodiscard]] const zel::IndexList<>& numbers() const { return counting; }
  // Fold f of folds, which numbers the counting samples only, in the numbers of all; the other
  // samples are held out by one fold after the other.
  [[nodiscard]] Fold inAll(Fold&& fold, std::uint64_t f, std::uint64_t folds) const;

 private:
  zel::IndexList<> counting;
  zel::IndexList<> others;
};

}  // namespace zelsvm
