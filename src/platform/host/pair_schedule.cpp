#include "platform/host/pair_schedule.h"

#include <algorithm>
#include <limits>

#include "base/memory.h"
#include "data/kernel_values.h"
#include "platform/row_slots.h"
#include "rules/kernel_traits.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Members cost their threads and solvers: trainings below this are over before that pays.
constexpr double leastNanoseconds = 2e6;
// A kernel row that threads share as well as they share pairs.
constexpr double wellSharedNanoseconds = 7e4;
constexpr double nanosecondsPerProduct = 0.04;
constexpr double nanosecondsPerSparseValue = 1.0;
constexpr std::uint64_t anyMemory = std::numeric_limits<std::uint64_t>::max();

// Estimate for one thread and a row of kernel values with so many samples, stored values taken to
// be spread evenly.
double rowNanoseconds(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t samples,
                      SVM_KERNEL kernel) {
  const auto features = static_cast<double>(matrix.cols());
  const double perRow =
      static_cast<double>(matrix.valueCount()) / static_cast<double>(matrix.rows());
  const double product = std::min(nanosecondsPerProduct * features,
                                  nanosecondsPerSparseValue * perRow * perRow / features);
  return static_cast<double>(samples) * (product + nanosecondsOf(kernel));
}

}  // namespace

// One thread per pair uses the processors best, but the members share the cache. So pairs go one
// after the other where they can use threads themselves just as well, that is where even a single
// kernel row is long, and the shares would not hold all rows of the largest pair. A formulation
// that sums up its first gradient prints a dot for as many samples as the cache holds rows, and the
// dots are not to depend on the number of threads: there the shares must hold all rows.
unsigned pairsAtOnce(const zelmag::AbstractMatrix<double>& samples, const KernelSettings& kernel,
                     std::uint64_t cacheMegabytes, const PairLoad& load) {
  // A caller's function is called by one thread.
  if (samples.kernelValues() != nullptr && !samples.kernelValues()->isShared()) return 1;
  const auto threads = std::min(static_cast<std::uint64_t>(zel::threadCount()), load.pairs);
  const double row = rowNanoseconds(samples, load.largest, kernel.type);
  const double total = load.kernelValues * row / static_cast<double>(load.largest);
  if (threads < 2 || total < leastNanoseconds || !zel::isWorthThreads(total)) return 1;
  const std::uint64_t bytes = load.largest * zel::roundedCapacity(load.largest) * sizeof(double);
  const std::uint64_t held = rowCacheBytes(cacheMegabytes, anyMemory, 1) / bytes;
  if (held >= threads) return static_cast<unsigned>(threads);
  if (row >= wellSharedNanoseconds) return 1;
  return static_cast<unsigned>(load.sumsStartGradient ? std::max<std::uint64_t>(held, 1) : threads);
}

}  // namespace zelsvm
