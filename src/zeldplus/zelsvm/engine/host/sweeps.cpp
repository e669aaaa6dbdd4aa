#include "platform/host/isa.h"
#include "zeldplus/zelsvm/engine/host/row_products.h"
#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"
#include "zeldplus/zelsvm/engine/host/transform_sweeps.h"

namespace zelsvm::inline ZEL_PLATFORM {

#ifdef __x86_64__
const SmoSweeps& smoSweeps() {
  return zel::tableForProcessor(baseline::smoSweepTable, avx2::smoSweepTable,
                                avx512::smoSweepTable);
}

const TransformSweeps& transformSweeps() {
  return zel::tableForProcessor(baseline::transformSweepTable, avx2::transformSweepTable,
                                avx512::transformSweepTable);
}

const RowProducts& rowProducts() {
  return zel::tableForProcessor(baseline::rowProductTable, avx2::rowProductTable,
                                avx512::rowProductTable);
}
#else
const SmoSweeps& smoSweeps() { return baseline::smoSweepTable; }

const TransformSweeps& transformSweeps() { return baseline::transformSweepTable; }

const RowProducts& rowProducts() { return baseline::rowProductTable; }
#endif

}  // namespace zelsvm::inline ZEL_PLATFORM
