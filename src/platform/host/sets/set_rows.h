// Sums over kernel rows of all samples, through a cache, in doubles or, of a few digits, in floats.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "platform/host/block/kernel_block.h"
#include "platform/row_keeper.h"
#include "platform/set_machine.h"

namespace zelsvm {

template <typename T>
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
  // Rows that may come from the cache are added so many at a time.
  static constexpr std::size_t mixed = groupRows<T>;

  void addNew(std::span<const WeightedRow> rows);
  void addMixed(std::span<const WeightedRow> rows);
  void make(const BlockUse<T>& use);
  [[nodiscard]] T* slot(std::uint64_t number) { return cache.data() + number * pitch; }

  const zelmag::AbstractMatrix<double>* samples = nullptr;
  KernelBlock<T> block;
  std::uint64_t pitch = 0;
  RowKeeper keeper;
  HostVector<T> cache;      // of the slots; touched as they are filled
  HostVector<T> scratch;    // rows that are not kept
  HostVector<T> work;       // sums of what is being added
  std::vector<bool> asked;  // by sample
  std::vector<WeightedRow> ordered;
  // Rows to be made.
  std::vector<std::uint64_t> numbers;
  std::vector<T> weights;
  std::vector<T*> targets;
  std::uint64_t madeCount = 0;
  std::uint64_t askedCount = 0;
};

}  // namespace zelsvm
