#include "platform/host/sets/part_sums.h"

#include <algorithm>

namespace zelsvm {

void PartSums::add(const SetTask& task, std::span<const WeightedRow> rows,
                   std::span<const unsigned> samples, std::span<double> sums) {
  columns.assign(samples.begin(), samples.end());
  numbers.clear();
  weights.clear();
  for (const WeightedRow& row : rows) {
    numbers.push_back(row.sample);
    weights.push_back(row.weight);
  }
  work.resize(blockPitch<double>(columns.size()));
  std::copy(sums.begin(), sums.end(), work.data());
  block.assign(SampleChoice(*task.samples, columns), task.kernel);
  double* const targets[] = {work.data()};
  block.compute(SampleChoice(*task.samples, numbers), {.weights = weights, .sums = targets});
  std::copy_n(work.data(), sums.size(), sums.begin());
}

}  // namespace zelsvm
