#include "platform/host/rows/kernel_rows.h"

#include <algorithm>

#include "platform/host/rows/row_costs.h"
#include "platform/host/rows/row_products.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Rows computed at once, and panels whose products are transformed before they leave the
// first-level cache for their slots, which lie at distances that the cache is bad at.
constexpr unsigned mostPackedTogether = 32;
constexpr std::uint64_t panelGroup = 8;
constexpr std::uint64_t groupSamples = panelGroup * panelSamples;
// Samples that stay in the last-level cache are as cheap to meet one row at a time (measured).
constexpr std::uint64_t cachedBytes = std::uint64_t{8} << 20;

}  // namespace

void KernelRows::assign(const zelmag::AbstractMatrix<double>& newSamples,
                        const HostKernel& newKernel) {
  samples = &newSamples;
  norms = newSamples.rowNorms().data();
  kernel = newKernel;
  packed = packingPays(newSamples);
  packed ? packedSamples.assign(newSamples, cachedBytes) : sparseColumns.assign(newSamples);
}

unsigned KernelRows::mostTogether() const {
  return packed && packedSamples.bytes() > cachedBytes ? mostPackedTogether : 1;
}

void KernelRows::compute(const RowTarget* rows, unsigned count) {
  if (packed) return computePacked(rows, count);
  for (unsigned c = 0; c < count; ++c) computeSparse(rows[c]);
}

void KernelRows::choose(const std::vector<std::uint64_t>& chosen) {
  const std::uint64_t length = samples->cols();
  denseRows.resize(chosen.size() * length);
  chosenNorms.resize(chosen.size());
  forEachChosen([&](std::uint64_t c) {
    samples->copyRow(denseRows.data() + c * length, chosen[c], true);
    chosenNorms[c] = norms[chosen[c]];
  });
}

void KernelRows::pairValues(std::size_t c, double* values) const {
  const std::uint64_t length = samples->cols();
  const double* const rows = denseRows.data();
  forEachChosen([&](std::uint64_t t) {
    values[t] = transformSweeps().dot(rows + c * length, rows + t * length, length);
  });
  kernel.transform(values, chosenNorms.data(), chosenNorms.size(), chosenNorms[c]);
}

// What it does with a chosen row takes about a nanosecond for two elements.
template <typename Body>
void KernelRows::forEachChosen(const Body& body) const {
  constexpr double nanosecondsPerElement = 0.5;
  constexpr std::uint64_t together = 8;
  zel::forEachChunk(chosenNorms.size(), together,
                    nanosecondsPerElement * static_cast<double>(samples->cols()),
                    [&](std::uint64_t begin, std::uint64_t end) {
                      for (std::uint64_t c = begin; c < end; ++c) body(c);
                    });
}

void KernelRows::computePacked(const RowTarget* rows, unsigned count) {
  const std::uint64_t length = packedSamples.length();
  denseRows.resize(count * length);
  factors.resize(count);
  for (unsigned c = 0; c < count; ++c) {
    samples->copyRow(denseRows.data() + c * length, rows[c].sample, true);
    packedSamples.toFactors(denseRows.data() + c * length);
    factors[c] = denseRows.data() + c * length;
  }
  const double perPanel =
      static_cast<double>(panelSamples * count) * packedNanoseconds(length, kernel.nanoseconds());
  zel::forEachChunk(
      packedSamples.panels(), panelGroup, perPanel,
      [&](std::uint64_t begin, std::uint64_t end) { computePanels(rows, count, begin, end); });
}

void KernelRows::computePanels(const RowTarget* rows, unsigned count, std::uint64_t begin,
                               std::uint64_t end) const {
  alignas(64) double products[mostPackedTogether * groupSamples];
  double* targets[mostPackedTogether] = {};
  const std::uint64_t first = begin * panelSamples;
  const std::uint64_t last = std::min(end * panelSamples, samples->rows());
  for (unsigned c = 0; c < count; ++c)
    targets[c] = count > 1 ? products + c * groupSamples : rows[c].values + first;
  packedSamples.multiply(begin, end, factors.data(), targets, count);
  for (unsigned c = 0; c < count; ++c) {
    kernel.transform(targets[c], norms + first, last - first, norms[rows[c].sample]);
    if (count > 1) std::copy_n(targets[c], last - first, rows[c].values + first);
  }
}

void KernelRows::computeSparse(const RowTarget& row) {
  const int* const offsets = samples->rowOffsets();
  const std::uint64_t count = ascending.assign(samples->columnIndices(), samples->values(),
                                               static_cast<std::uint64_t>(offsets[row.sample]),
                                               static_cast<std::uint64_t>(offsets[row.sample + 1]));
  entries.resize(count);
  for (std::uint64_t k = 0; k < count; ++k)
    entries[k] = {static_cast<std::uint64_t>(ascending.columns[k]), ascending.values[k]};
  const double total = nanosecondsPerSparseValue * sparseColumns.work(entries);
  const std::uint64_t n = samples->rows();
  zel::forEachChunk(
      n, sparseColumns.stretch(), total / static_cast<double>(n) + kernel.nanoseconds(),
      [&](std::uint64_t begin, std::uint64_t end) {
        sparseColumns.multiply(entries, begin, row.values + begin);
        kernel.transform(row.values + begin, norms + begin, end - begin, norms[row.sample]);
      });
}

}  // namespace zelsvm
