// Sums over kernel rows of all samples, through a cache.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "platform/host/block/kernel_block.h"
#include "platform/row_keeper.h"
#include "platform/set_machine.h"

namespace zelsvm {

class SetRows {
 public:
  // The task's samples must outlive the solve. Throws std::bad_alloc.
  void assign(const SetTask& task);
  // SetMachine::addRows. Rows asked for the first time come before the others, in both cases in
  // the order given, so that what the cache holds changes no bit.
  void add(std::span<const WeightedRow> rows, std::span<double> sums);
  [[nodiscard]] std::uint64_t made() const { return madeCount; }
  [[nodiscard]] double hitRate() const {
    return askedCount == 0 ? 0
                           : 1 - static_cast<double>(madeCount) / static_cast<double>(askedCount);
  }

 private:
  // Rows that may come from the cache or not are added so many at a time.
  static constexpr std::size_t mixed = 32;

  void addNew(std::span<const WeightedRow> rows);
  void addKnown(std::span<const WeightedRow> rows);
  void make(bool add);
  [[nodiscard]] double* slot(std::uint64_t number) { return cache.data() + number * pitch; }

  const zelmag::AbstractMatrix<double>* samples = nullptr;
  KernelBlock<double> block;
  std::uint64_t pitch = 0;
  RowKeeper keeper;
  HostVector<double> cache;    // of the slots; touched as they are filled
  HostVector<double> scratch;  // rows that are not kept
  HostVector<double> work;     // sums, aligned
  std::vector<bool> asked;     // by sample
  std::vector<WeightedRow> ordered;
  // Rows to be made.
  std::vector<std::uint64_t> numbers;
  std::vector<double> weights;
  std::vector<double*> targets;
  std::uint64_t madeCount = 0;
  std::uint64_t askedCount = 0;
};

}  // namespace zelsvm
