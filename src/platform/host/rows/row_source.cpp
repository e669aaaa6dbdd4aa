#include "platform/host/rows/row_source.h"

#include <algorithm>

#include "base/memory.h"
#include "platform/host/products/block_products.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Samples of a block's columns that are transformed together.
constexpr std::uint64_t blockGrain = 4096;

}  // namespace

void RowSource::assign(const SolverTask& task, RowForecast& newForecast) {
  samples = task.samples;
  kernel = HostKernel(task.kernel);
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

void RowSource::forEachBlock(const std::function<void(const KernelColumns& block)>& use) {
  slots.clear();
  DenseRows blockRows(*samples);
  BlockProducts products(*samples);
  for (std::uint64_t first = 0; first < samples->rows(); first += slots.count()) {
    const std::uint64_t count = std::min(slots.count(), samples->rows() - first);
    products.multiply(blockRows.rows(first, count), samples->cols(), memory.data(), slotPitch,
                      count);
    transform(first, count);
    use({memory.data(), slotPitch, first, count});
  }
}

// The products of a block's columns.
void RowSource::transform(std::uint64_t first, std::uint64_t count) {
  const double* const norms = samples->rowNorms().data();
  zel::forEachChunk(samples->rows(), blockGrain, kernel.nanoseconds() * static_cast<double>(count),
                    [&](std::uint64_t begin, std::uint64_t end) {
                      for (std::uint64_t c = 0; c < count; ++c)
                        kernel.transform(slot(c) + begin, norms + begin, end - begin,
                                         norms[first + c]);
                    });
}

}  // namespace zelsvm
