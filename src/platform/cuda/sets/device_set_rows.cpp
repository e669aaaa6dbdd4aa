#include "platform/cuda/sets/device_set_rows.h"

#include <algorithm>

#include "platform/cuda/runtime/device.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/row_slots.h"

namespace zelsvm {
namespace {

constexpr unsigned sweepBlock = 128;
// Products of rows on their way into the sums: enough rows for a product to be fast.
constexpr std::uint64_t mostProductBytes = std::uint64_t{256} << 20;
constexpr std::uint64_t mostProductRows = 1024;
constexpr std::uint64_t leastProductRows = std::uint64_t{2} * stripeRows;

}  // namespace

void DeviceSetRows::assign(const SetTask& task, DeviceSamples& newSamples) {
  samples = &newSamples;
  sampleCount = task.samples->rows();
  hostNorms = task.samples->rowNorms().data();
  norms.assign({hostNorms, sampleCount});
  addKernel = addRowsKernelOf(task.kernel.type);
  addLimit = zel::gridLimit(addKernel, sweepBlock);
  partialLimit = zel::gridLimit(addPartialsKernel, sweepBlock);
  pitch = zel::roundedCapacity(sampleCount);
  const std::uint64_t rowBytes = pitch * sizeof(double);
  const std::uint64_t ours = (cache.capacity() + products.capacity()) * sizeof(double);
  const std::uint64_t available = zel::freeDeviceMemory() + ours;
  rowsAtOnce = std::clamp(std::min(mostProductBytes, available / 8) / rowBytes, leastProductRows,
                          mostProductRows) /
               stripeRows * stripeRows;
  const std::uint64_t slots = rowSlotCount(
      sampleCount, rowBytes, rowCacheBytes(task.cacheMegabytes, available, task.cacheSharers));
  keeper.assign(sampleCount, slots);
  cache.resize(slots * pitch);
  products.resize(std::min(rowsAtOnce, sampleCount) * pitch);
  partials.resize((rowsAtOnce / stripeRows) * pitch);
  sumsThere.resize(sampleCount);
  madeCount = 0;
  askedCount = 0;
}

void DeviceSetRows::add(std::span<const WeightedRow> rows, std::span<double> sums) {
  if (rows.empty()) return;
  plan(rows);
  addedThere.assign(added);
  missingThere.assign(missing);
  sumsThere.upload(sums);
  for (std::uint64_t first = 0; first < rows.size(); first += rowsAtOnce) {
    const std::uint64_t count = std::min<std::uint64_t>(rowsAtOnce, rows.size() - first);
    makeProducts(first, count);
    addPart(first, count);
  }
  sumsThere.download(sums);
}

// Which of the rows the cache has, and where the others are made: each part of the rows uses the
// memory of products anew.
void DeviceSetRows::plan(std::span<const WeightedRow> rows) {
  added.clear();
  missing.clear();
  missingBefore.assign(1, 0);
  keeper.beginRound();
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const auto [sample, keep, weight] = rows[r];
    const std::uint32_t place = keeper.find(sample, keep);
    AddedRow row{nullptr, nullptr, hostNorms[sample], weight, place != RowKeeper::noSlot};
    if (row.isMade) {
      row.values = cache.data() + place * pitch;
    } else {
      const std::uint64_t partStart = missingBefore[r / rowsAtOnce * rowsAtOnce];
      row.values = products.data() + (missing.size() - partStart) * pitch;
      missing.push_back(sample);
      const std::uint32_t slot = keep ? keeper.grab(sample) : RowKeeper::noSlot;
      if (slot != RowKeeper::noSlot) row.kept = cache.data() + slot * pitch;
    }
    added.push_back(row);
    missingBefore.push_back(missing.size());
  }
  askedCount += rows.size();
  madeCount += missing.size();
}

void DeviceSetRows::makeProducts(std::uint64_t first, std::uint64_t count) {
  const std::uint64_t begin = missingBefore[first];
  const std::uint64_t end = missingBefore[first + count];
  std::uint64_t part = 0;
  for (std::uint64_t done = begin; done < end; done += part) {
    part = std::min(samples->rowsAtOnce(), end - done);
    samples->blockProducts(samples->rowsOf(missingThere.data() + done, part), samples->cols(),
                           products.data() + (done - begin) * pitch, pitch, part);
  }
}

void DeviceSetRows::addPart(std::uint64_t first, std::uint64_t count) {
  const auto stripes = static_cast<unsigned>((count + stripeRows - 1) / stripeRows);
  const unsigned across = zel::gridSize(addLimit, sampleCount, sweepBlock);
  zel::launch(addKernel, {dim3{across, stripes}, sweepBlock}, partials.data(), pitch,
              addedThere.data() + first, static_cast<unsigned>(count), norms.data(), sampleCount);
  zel::launch(addPartialsKernel, {zel::gridSize(partialLimit, sampleCount, sweepBlock), sweepBlock},
              sumsThere.data(), partials.data(), pitch, stripes, sampleCount);
}

}  // namespace zelsvm
