// Rows of the kernel matrix on demand, through a cache.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"
#include "platform/host/rows/batch_policy.h"
#include "platform/host/rows/kernel_rows.h"
#include "platform/host/sweeps/host_kernel.h"
#include "platform/machine.h"
#include "platform/row_slots.h"

namespace zelsvm {

// Which kernel rows a solver will probably ask for.
class RowForecast {
 public:
  RowForecast() = default;
  RowForecast(const RowForecast&) = delete;
  RowForecast& operator=(const RowForecast&) = delete;
  virtual ~RowForecast() = default;

  // Fills samples with at most `most` distinct ones for which isKnown[sample] is 0, the likeliest
  // first. A row is being asked for.
  virtual void likelySamples(std::vector<std::uint64_t>& samples, unsigned most,
                             const std::vector<std::uint32_t>& isKnown, KernelRows& kernel) = 0;
};

class RowSource {
 public:
  // For the task's solve, whose samples must outlive it. Where a row has to be computed, rows that
  // the forecast names may be computed with it. Throws std::bad_alloc.
  void assign(const SolverTask& task, RowForecast& forecast);
  // The sample's row, one value per sample; valid until its slot is reused, which the next three
  // calls do not do.
  const double* row(std::uint64_t sample);
  // sums[i] += sum of weights[s] K(s, i), one weight per sample; those of weight 0 cost nothing.
  // The sums have room for blockPitch of the samples. Calls passed whenever as many samples as
  // there are slots, or the last ones, have been seen to.
  void addRows(std::span<const double> weights, double* sums,
               const std::function<void()>& passed) const;
  [[nodiscard]] std::uint64_t slotCount() const { return slots.count(); }

  // K(x, x) by sample; null where it always is 1.
  [[nodiscard]] const double* diagonal() const { return diagonalValues; }
  // The part of the rows asked for since assign() that the cache held; 0 before the first.
  [[nodiscard]] double hitRate() const;
  // Rows that were computed before they were asked for, since assign().
  [[nodiscard]] std::uint64_t usedGuesses() const { return slots.usedGuesses(); }

 private:
  void makeDiagonal(SVM_KERNEL kernelType);
  const double* compute(std::uint64_t sample);
  [[nodiscard]] double* slot(std::uint64_t number) { return memory.data() + number * slotPitch; }

  const zelmag::AbstractMatrix<double>* samples = nullptr;
  KernelSettings settings{};
  HostKernel kernel;
  KernelRows rows;
  RowForecast* forecast = nullptr;
  std::uint64_t slotPitch = 0;
  RowSlots slots;
  HostVector<double> memory;  // of the slots
  BatchPolicy policy;
  std::vector<std::uint64_t> guesses;
  std::vector<RowTarget> targets;
  std::uint64_t requests = 0;
  std::uint64_t misses = 0;
  HostVector<double> ownDiagonal;
  const double* diagonalValues = nullptr;
};

}  // namespace zelsvm
