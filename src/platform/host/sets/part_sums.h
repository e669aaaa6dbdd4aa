// Exact sums over kernel rows, for some of the samples.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/vectors.h"
#include "platform/host/block/kernel_block.h"
#include "platform/set_machine.h"

namespace zelsvm {

class PartSums {
 public:
  // SetMachine::addExactly. Throws std::bad_alloc.
  void add(const SetTask& task, std::span<const WeightedRow> rows,
           std::span<const unsigned> samples, std::span<double> sums);

 private:
  KernelBlock<double> block;
  std::vector<std::uint64_t> columns;
  std::vector<std::uint64_t> numbers;
  std::vector<double> weights;
  HostVector<double> work;  // sums, aligned
};

}  // namespace zelsvm
