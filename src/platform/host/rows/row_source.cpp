#include "platform/host/rows/row_source.h"

#include <algorithm>

#include "base/memory.h"
#include "platform/host/block/kernel_block.h"

namespace zelsvm {
namespace {

// Rows of a start gradient between two signs of life.
constexpr std::uint64_t rowsAdded = 1024;

}  // namespace

void RowSource::assign(const SolverTask& task, RowForecast& newForecast) {
  samples = task.samples;
  settings = task.kernel;
  kernel = HostKernel(settings);
  forecast = &newForecast;
  const std::uint64_t n = samples->rows();
  slotPitch = zel::roundedCapacity(n);
  const std::uint64_t obtainable = zel::obtainableMemory() + memory.capacity() * sizeof(double);
  slots.assign(n, rowSlotCount(n, slotPitch * sizeof(double),
                               rowCacheBytes(task.cacheMegabytes, obtainable, task.cacheSharers)));
  memory.resize(slots.count() * slotPitch);
  makeDiagonal(task.kernel.type);
  rows.assign(*samples, kernel);
  // With fewer slots than that guesses might crowd out rows in use.
  policy = BatchPolicy(
      static_cast<unsigned>(std::min<std::uint64_t>(rows.mostTogether(), slots.count() / 4)));
  requests = 0;
  misses = 0;
}

void RowSource::makeDiagonal(SVM_KERNEL kernelType) {
  const HostVector<double>& norms = samples->rowNorms();
  diagonalValues = withKernel(kernelType, [&]<typename Function>() -> const double* {
    static_assert(Function::unitDiagonal || !Function::readsNorms);
    if constexpr (Function::unitDiagonal) return nullptr;
    if constexpr (Function::isProduct) return norms.data();
    ownDiagonal.resize(norms.size());
    ownDiagonal.copyFrom(norms, 0, 0, norms.size());
    kernel.transform(ownDiagonal.data(), nullptr, ownDiagonal.size(), 0);
    return ownDiagonal.data();
  });
}

double RowSource::hitRate() const {
  return requests == 0 ? 0 : static_cast<double>(requests - misses) / static_cast<double>(requests);
}

const double* RowSource::row(std::uint64_t sample) {
  ++requests;
  if (const auto cached = slots.query(sample)) return slot(*cached);
  ++misses;
  return compute(sample);
}

const double* RowSource::compute(std::uint64_t sample) {
  double* const values = slot(slots.grab(sample));
  targets.assign(1, {sample, values});
  if (const unsigned most = policy.guesses(slots.usedGuesses()); most > 0) {
    forecast->likelySamples(guesses, most, slots.cachedRows(), rows);
    for (const std::uint64_t guess : guesses)
      targets.push_back({guess, slot(slots.grabGuess(guess))});
    policy.guessed(guesses.size());
  }
  rows.compute(targets.data(), static_cast<unsigned>(targets.size()));
  return values;
}

void RowSource::addRows(std::span<const double> weights, double* sums,
                        const std::function<void()>& passed) const {
  std::vector<std::uint64_t> weighted;
  std::vector<double> factors;
  for (std::uint64_t s = 0; s < weights.size(); ++s) {
    if (weights[s] == 0) continue;
    weighted.push_back(s);
    factors.push_back(weights[s]);
  }
  KernelBlock<double> block;
  if (!weighted.empty()) block.assign(SampleChoice(*samples), settings);
  double* const targets[] = {sums};
  std::uint64_t reported = 0;
  for (std::uint64_t first = 0; first < weighted.size(); first += rowsAdded) {
    const std::uint64_t count = std::min(rowsAdded, weighted.size() - first);
    block.compute(SampleChoice(*samples, std::span(weighted).subspan(first, count)),
                  {{}, {factors.data() + first, count}, targets});
    const std::uint64_t seen = weighted[first + count - 1] + 1;
    for (; reported + slots.count() <= seen; reported += slots.count()) passed();
  }
  for (; reported < weights.size(); reported += slots.count()) passed();
}

}  // namespace zelsvm
