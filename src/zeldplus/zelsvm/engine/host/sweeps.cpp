#include "platform/host/isa.h"
#include "zeldplus/zelsvm/engine/host/row_products.h"
#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"
#include "zeldplus/zelsvm/engine/host/transform_sweeps.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// A table of sweeps or one function.
template <typename Table>
Table& choose(Table& baselineTable, [[maybe_unused]] Table& avx2Table,
              [[maybe_unused]] Table& avx512Table) {
  switch (zel::processorIsa()) {
    case zel::Isa::avx512:
      return avx512Table;
    case zel::Isa::avx2:
      return avx2Table;
    case zel::Isa::baseline:
      break;
  }
  return baselineTable;
}

}  // namespace

#ifdef __x86_64__
const SmoSweeps& smoSweeps() {
  static const SmoSweeps& chosen =
      choose(baseline::smoSweepTable, avx2::smoSweepTable, avx512::smoSweepTable);
  return chosen;
}

const TransformSweeps& transformSweeps() {
  static const TransformSweeps& chosen =
      choose(baseline::transformSweepTable, avx2::transformSweepTable, avx512::transformSweepTable);
  return chosen;
}

RowProducts rowProducts() {
  static const RowProducts chosen =
      choose(baseline::rowProducts, avx2::rowProducts, avx512::rowProducts);
  return chosen;
}
#else
const SmoSweeps& smoSweeps() { return baseline::smoSweepTable; }

const TransformSweeps& transformSweeps() { return baseline::transformSweepTable; }

RowProducts rowProducts() { return baseline::rowProducts; }
#endif

}  // namespace zelsvm::inline ZEL_PLATFORM
