#include "platform/host/block/block_sweeps.h"
#include "platform/host/isa.h"
#include "platform/host/sets/set_sweeps.h"
#include "platform/host/sweeps/portable_table.h"
#include "platform/host/sweeps/sigmoid_sweeps.h"
#include "platform/host/sweeps/smo_sweeps.h"

namespace zelsvm {

#ifdef __x86_64__
const SmoSweeps& smoSweeps() {
  return zel::tableForProcessor(baseline::smoSweepTable, avx2::smoSweepTable,
                                avx512::smoSweepTable);
}

const SigmoidSweeps& sigmoidSweeps() {
  return zel::tableForProcessor(baseline::sigmoidSweepTable, avx2::sigmoidSweepTable,
                                avx512::sigmoidSweepTable);
}

const PortableTable& portableTable() {
  return zel::tableForProcessor(baseline::portableFunctions, avx2::portableFunctions,
                                avx512::portableFunctions);
}

const SetSweepTable& setSweepTable() {
  return zel::tableForProcessor(baseline::setSweepTable, avx2::setSweepTable,
                                avx512::setSweepTable);
}

template <>
const BlockSweeps<double>& blockSweeps() {
  return zel::tableForProcessor(baseline::blockSweepTable, avx2::blockSweepTable,
                                avx512::blockSweepTable);
}

template <>
const BlockSweeps<float>& blockSweeps() {
  return zel::tableForProcessor(baseline::floatBlockSweepTable, avx2::floatBlockSweepTable,
                                avx512::floatBlockSweepTable);
}
#else
const SmoSweeps& smoSweeps() { return baseline::smoSweepTable; }

const SigmoidSweeps& sigmoidSweeps() { return baseline::sigmoidSweepTable; }

const PortableTable& portableTable() { return baseline::portableFunctions; }

const SetSweepTable& setSweepTable() { return baseline::setSweepTable; }

template <>
const BlockSweeps<double>& blockSweeps() {
  return baseline::blockSweepTable;
}

template <>
const BlockSweeps<float>& blockSweeps() {
  return baseline::floatBlockSweepTable;
}
#endif

}  // namespace zelsvm
