// Kernel values of some samples, the rows, with many others, the columns: how the processor makes
// all of them. Equal bits for a value whichever rows are computed with it, however its samples are
// stored, and on every processor that fuses multiply-adds.
#pragma once

#include <cstdint>

#include "platform/host/block/block_use.h"
#include "platform/host/block/given_block.h"
#include "platform/host/block/inverted_samples.h"
#include "platform/host/block/packed_columns.h"
#include "platform/host/block/sparse_block.h"
#include "platform/machine.h"

namespace zelsvm {

// Values that are given are handed on; those come with the rows. Doubles, or floats where a few
// digits do. Used by one thread at a time; its loops take threads.
template <typename T>
class KernelBlock {
 public:
  // Columns, which outlive the use of the block. Memory is kept for the next ones. Throws
  // std::bad_alloc, as the other functions do; these throw what a source of given values throws,
  // too.
  void assign(const SampleChoice& columns, const KernelSettings& kernel);

  [[nodiscard]] std::uint64_t columns() const { return chosen.count(); }
  // Squared norms of the columns, by which equal samples are at distance 0; not where values are
  // given.
  [[nodiscard]] const T* norms() const {
    return isDense ? denseColumns.norms() : sparseColumns.norms();
  }

  // Any number of rows, of any matrix: features that only one of the two has take part in norms
  // only. Of a repeated feature the last entry counts.
  void compute(const SampleChoice& rows, const BlockUse<T>& use);
  // values[i * pitch + j] = K(column i, column j) for all of them; pitch is a blockPitch.
  void computeAll(T* values, std::uint64_t pitch);
  // values[i] = K(column i, column i); there is room for blockPitch of the columns.
  void computeDiagonal(T* values) const;
  // What one value costs a thread, about, where many rows are made.
  [[nodiscard]] double nanosecondsPerValue() const;

 private:
  void computeBatches(const SampleChoice& rows, const BlockUse<T>& use, T* mirror,
                      std::uint64_t mirrorPitch);
  [[nodiscard]] bool isGiven() const { return type == SVM_KERNEL_PRECOMPUTED; }
  void computeDense(const SampleChoice& batch, const BlockUse<T>& use, BlockTask<T>& task);
  void computeSparse(const SampleChoice& batch, const BlockUse<T>& use, BlockTask<T>& task);
  void finish(const BlockUse<T>& use, std::uint64_t begin, std::uint64_t end) const;
  bool computeSingle(const SampleChoice& row, const BlockTask<T>& task);

  SampleChoice chosen;
  GivenBlock<T> given;
  SVM_KERNEL type = SVM_KERNEL_LINEAR;
  KernelConstants constants{};
  double functionNanoseconds = 0;
  bool isDense = true;
  PackedColumns<T> denseColumns;
  PackedRows<T> denseRows;
  SparseSamples<T> sparseColumns;
  SparseRows<T> sparseRows;
  InvertedSamples<T> inverted;  // made for the first row that comes alone
};

}  // namespace zelsvm
