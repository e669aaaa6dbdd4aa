// A block whose kernel values are given: rows are gathered where others are computed.
#pragma once

#include <cstdint>
#include <vector>

#include "base/vectors.h"
#include "data/kernel_values.h"
#include "platform/host/block/block_use.h"
#include "platform/host/block/sample_choice.h"

namespace zelsvm {

// The rows bring the values: those of a training come from anywhere, those of a prediction are the
// test samples.
template <typename T>
class GivenBlock {
 public:
  void assign(const SampleChoice& columns) { chosen = columns; }
  // As KernelBlock does, and throws what the source of the values throws.
  void compute(const SampleChoice& rows, const BlockUse<T>& use);
  void computeDiagonal(T* values) const;

 private:
  void read(const zelmag::KernelValues& source, const SampleChoice& rows, T* const* targets);
  void add(const T* const* rows, std::uint64_t count, const T* weights,
           std::span<T* const> sums) const;

  SampleChoice chosen;
  std::vector<std::uint64_t> columns;  // of the values
  HostVector<T> scratch;               // for rows that nobody stores
};

}  // namespace zelsvm
