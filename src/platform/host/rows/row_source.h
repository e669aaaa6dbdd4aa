// Rows of the kernel matrix on demand, through a cache.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "base/vectors.h"
#include "data/matrix.h"
#include "platform/host/block/kernel_block.h"
#include "platform/machine.h"
#include "platform/row_slots.h"

namespace zelsvm {

class RowSource {
 public:
  // For the task's solve, whose samples must outlive it. Throws std::bad_alloc.
  void assign(const SolverTask& task);
  // The sample's row, one value per sample; valid until its slot is reused, which the next three
  // calls do not do.
  const double* row(std::uint64_t sample);
  // sums[i] += sum of weights[s] K(s, i), one weight per sample; those of weight 0 cost nothing.
  // The sums have room for blockPitch of the samples. Calls passed whenever as many samples as
  // there are slots, or the last ones, have been seen to.
  void addRows(std::span<const double> weights, double* sums, const std::function<void()>& passed);
  [[nodiscard]] std::uint64_t slotCount() const { return slots.count(); }

  // K(x, x) by sample; null where it always is 1.
  [[nodiscard]] const double* diagonal() const { return diagonalValues; }
  // The part of the rows asked for since assign() that the cache held; 0 before the first.
  [[nodiscard]] double hitRate() const;

 private:
  [[nodiscard]] double* slot(std::uint64_t number) { return memory.data() + number * slotPitch; }

  const zelmag::AbstractMatrix<double>* samples = nullptr;
  KernelBlock<double> block;
  std::uint64_t slotPitch = 0;
  RowSlots slots;
  HostVector<double> memory;  // of the slots
  std::uint64_t requests = 0;
  std::uint64_t misses = 0;
  HostVector<double> ownDiagonal;
  const double* diagonalValues = nullptr;
};

}  // namespace zelsvm
