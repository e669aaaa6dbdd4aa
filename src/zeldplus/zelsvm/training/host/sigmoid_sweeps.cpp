#include "zeldplus/zelsvm/training/host/sigmoid_sweeps.h"

#include "platform/host/isa.h"

namespace zelsvm::inline ZEL_PLATFORM {

#ifdef __x86_64__
const SigmoidSweeps& sigmoidSweeps() {
  return zel::tableForProcessor(baseline::sigmoidSweepTable, avx2::sigmoidSweepTable,
                                avx512::sigmoidSweepTable);
}
#else
const SigmoidSweeps& sigmoidSweeps() { return baseline::sigmoidSweepTable; }
#endif

}  // namespace zelsvm::inline ZEL_PLATFORM
