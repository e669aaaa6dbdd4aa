#include "platform/host/isa.h"
#include "zeldplus/zelsvm/engine/host/row_products.h"
#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"
#include "zeldplus/zelsvm/engine/host/transform_sweeps.h"

namespace zelsvm::inline ZEL_PLATFORM {

#ifdef __x86_64__
const SmoSweeps& smoSweeps() {
  static const SmoSweeps& chosen =
      zel::tableForProcessor(baseline::smoSweepTable, avx2::smoSweepTable, avx512::smoSweepTable);
  return chosen;
}

const TransformSweeps& transformSweeps() {
  static const TransformSweeps& chosen = zel::tableForProcessor(
      baseline::transformSweepTable, avx2::transformSweepTable, avx512::transformSweepTable);
  return chosen;
}

const RowProducts& rowProducts() {
  static const RowProducts& chosen = zel::tableForProcessor(
      baseline::rowProductTable, avx2::rowProductTable, avx512::rowProductTable);
  return chosen;
}
#else
const SmoSweeps& smoSweeps() { return baseline::smoSweepTable; }

const TransformSweeps& transformSweeps() { return baseline::transformSweepTable; }

const RowProducts& rowProducts() { return baseline::rowProductTable; }
#endif

}  // namespace zelsvm::inline ZEL_PLATFORM
