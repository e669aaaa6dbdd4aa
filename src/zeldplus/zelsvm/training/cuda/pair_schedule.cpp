#include "zeldplus/zelsvm/training/pair_schedule.h"

namespace zelsvm::inline ZEL_PLATFORM {

// The device serves one solve at a time.
template <typename T>
unsigned pairsAtOnce(const SvmSettings<T>& /*settings*/,
                     const zelmag::AbstractMatrix<T>& /*samples*/, const PairLoad& /*load*/) {
  return 1;
}

void runMembers(unsigned /*count*/, const std::function<void(unsigned)>& member) { member(0); }

template unsigned pairsAtOnce(const SvmSettings<double>&, const zelmag::AbstractMatrix<double>&,
                              const PairLoad&);

}  // namespace zelsvm::inline ZEL_PLATFORM
