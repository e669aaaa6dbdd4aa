#include "zeldplus/zelsvm/training/pair_schedule.h"

#include <algorithm>

#include "platform/host/parallel.h"
#include "zeldplus/inc/zelmemory.h"
#include "zeldplus/zelsvm/engine/host/row_costs.h"
#include "zeldplus/zelsvm/engine/mru_cache.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// Members cost their threads and solvers: trainings below this are over before that pays.
constexpr double leastNanoseconds = 2e6;
// A kernel row that threads share as well as they share pairs.
constexpr double wellSharedNanoseconds = 7e4;

}  // namespace

// One thread per pair uses the processors best, but the members share the cache. So pairs go one
// after the other where they can use threads themselves just as well, that is where even a single
// kernel row is long, and the shares would not hold all rows of the largest pair. A formulation
// that sums up its first gradient goes by blocks of the cache's size, which is not to depend on the
// number of threads: there the shares must hold all rows.
template <typename T>
unsigned pairsAtOnce(const SvmSettings<T>& settings, const zelmag::AbstractMatrix<T>& samples,
                     const PairLoad& load) {
  const auto threads = std::min(static_cast<std::uint64_t>(zel::threadCount()), load.pairs);
  const double row = rowNanoseconds(samples, load.largest, settings.kernelType);
  const double total = load.kernelValues * row / static_cast<double>(load.largest);
  if (threads < 2 || total < leastNanoseconds || !zel::isWorthThreads(total)) return 1;
  const std::uint64_t bytes = load.largest * zel::roundedCapacity(load.largest) * sizeof(T);
  const std::uint64_t held = cacheBudget(settings.cacheSize) / bytes;
  if (held >= threads) return static_cast<unsigned>(threads);
  if (row >= wellSharedNanoseconds) return 1;
  const bool sums = settings.svmType == SVM_TYPE_NU_CLASSIFICATION;
  return static_cast<unsigned>(sums ? std::max<std::uint64_t>(held, 1) : threads);
}

void runMembers(unsigned count, const std::function<void(unsigned)>& member) {
  zel::runCrew(static_cast<int>(count), [&](int number) { member(static_cast<unsigned>(number)); });
}

template unsigned pairsAtOnce(const SvmSettings<double>&, const zelmag::AbstractMatrix<double>&,
                              const PairLoad&);

}  // namespace zelsvm::inline ZEL_PLATFORM
