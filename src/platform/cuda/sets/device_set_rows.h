// Sums over kernel rows of all samples on the device, through a cache.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/cuda/kernels/set_row_kernels.h"
#include "platform/cuda/machine/device_samples.h"
#include "platform/cuda/runtime/device_vector.h"
#include "platform/row_keeper.h"
#include "platform/set_machine.h"

namespace zelsvm {

// The kernel function's parameters are those that the device's symbols have. Throws
// RuntimeException for device failures.
class DeviceSetRows {
 public:
  // The samples must outlive the solve.
  void assign(const SetTask& task, DeviceSamples& newSamples);
  // SetMachine::addRows.
  void add(std::span<const WeightedRow> rows, std::span<double> sums);
  [[nodiscard]] std::uint64_t made() const { return madeCount; }
  [[nodiscard]] double hitRate() const {
    return askedCount == 0 ? 0
                           : 1 - static_cast<double>(madeCount) / static_cast<double>(askedCount);
  }

 private:
  void plan(std::span<const WeightedRow> rows);
  void makeProducts(std::uint64_t first, std::uint64_t count);
  void addPart(std::uint64_t first, std::uint64_t count);

  DeviceSamples* samples = nullptr;
  const double* hostNorms = nullptr;
  std::uint64_t sampleCount = 0;
  std::uint64_t pitch = 0;
  std::uint64_t rowsAtOnce = 0;  // that are made together
  AddRowsKernel addKernel = nullptr;
  unsigned addLimit = 0;
  unsigned partialLimit = 0;
  RowKeeper keeper;
  zel::DeviceVector<double> cache;     // of the slots
  zel::DeviceVector<double> products;  // of rows that are made
  zel::DeviceVector<double> norms;
  zel::DeviceVector<double> sumsThere;
  zel::DeviceVector<double> partials;
  // Rows to be added, and the numbers of those to be made, by place.
  std::vector<AddedRow> added;
  std::vector<unsigned> missing;
  std::vector<std::uint64_t> missingBefore;  // rows up to each place
  zel::DeviceVector<AddedRow> addedThere;
  zel::DeviceVector<unsigned> missingThere;
  std::uint64_t madeCount = 0;
  std::uint64_t askedCount = 0;
};

}  // namespace zelsvm
