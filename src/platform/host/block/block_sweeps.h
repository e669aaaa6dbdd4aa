// Kernel values of some rows with many columns, built once per instruction set.
#pragma once

#include <cstdint>

#include "rules/kernel_functions.h"
#include "rules/kernel_type.h"

namespace zelsvm {

// Rows whose values stay in the first-level cache until they have been used.
template <typename T>
inline constexpr std::uint64_t groupRows = 256 / sizeof(T);

// What is made of the kernel values. Each is a single running sum of fused products over ascending
// features, so that its bits depend on its row and column alone.
template <typename T>
struct BlockTask {
  KernelConstants constants;
  std::uint64_t columns;
  const T* columnNorms;  // panel by panel, 0 behind the last column
  std::uint64_t rows;
  const T* rowNorms;
  T* const* stored;  // a row's values, from the first column on; null entries, or null: none
  bool streamed;     // nobody reads them soon
  // sums[f][c] += weights[r * functions + f] K(r, c), row after row, each fused.
  const T* weights;
  std::uint64_t functions;
  T* const* sums;
  // Where rows and columns are the same and K(firstRow + r, c) is stored: the matrix, its rows
  // mirrorPitch apart, in which K(c, firstRow + r) is to be stored, too. Else null.
  T* mirror;
  std::uint64_t mirrorPitch;
  std::uint64_t firstRow;
};

// Columns in panels of panelColumns: element k of a panel's c-th column stands behind k *
// panelColumns + c others. Rows in tiles, as tileHeight gives them: element k of a tile's r-th row
// stands behind k * height + r others. What only the longer ones have takes no part.
template <typename T>
struct DenseFactors {
  const T* panels;
  std::uint64_t columnLength;
  const T* tiles;
  std::uint64_t rowLength;
};

// Columns as compressed sparse ones, their features distinct and ascending. places[feature] tells
// which of the lines holds that feature of the rows, groupRows<T> at most; line 0 holds zeros, for
// features that no row has.
template <typename T>
struct SparseFactors {
  const std::uint64_t* begins;
  const std::uint64_t* ends;
  const int* features;
  const double* values;
  const unsigned* places;
  const T* lines;
};

template <typename T>
struct BlockSweeps {
  std::uint64_t panelColumns;
  std::uint64_t tileRows;
  // Of the columns of panels begin … end - 1, by kernel function. All arrays are aligned to 64
  // bytes and have room up to the next multiple of 64 bytes.
  void (*dense[SVM_KERNEL_UNSUPPORTED])(const BlockTask<T>& task, const DenseFactors<T>& factors,
                                        std::uint64_t begin, std::uint64_t end);
  void (*sparse[SVM_KERNEL_UNSUPPORTED])(const BlockTask<T>& task, const SparseFactors<T>& factors,
                                         std::uint64_t begin, std::uint64_t end);
  // Products of a row with count columns become kernel values.
  void (*transform[SVM_KERNEL_UNSUPPORTED])(const KernelConstants& constants, T* products,
                                            const T* norms, std::uint64_t count, T norm);
  // norms[i] = sum of values[k * stride + i]², i < stride, summed as the products are.
  void (*norms)(const T* values, std::uint64_t length, std::uint64_t stride, T* norms);
  // sums[positions[p]] += factor * values[p], p from begin to end - 1.
  void (*addColumn)(const T* values, const unsigned* positions, std::uint64_t begin,
                    std::uint64_t end, T factor, T* sums);
  // sums[c] += sum of weights[r] rows[r][c] for begin <= c < end, row after row, each fused as in
  // the block. Arrays are aligned to 64 bytes, begin too, and have room up to the next multiple.
  void (*addRows)(const T* const* rows, const T* weights, std::uint64_t count, std::uint64_t begin,
                  std::uint64_t end, T* sums);
};

// Rows in the tile that begins where so many are left.
constexpr std::uint64_t tileHeight(std::uint64_t tileRows, std::uint64_t left) {
  std::uint64_t height = tileRows;
  while (height > left) height /= 2;
  return height;
}

// The sweeps for this processor.
template <typename T>
const BlockSweeps<T>& blockSweeps();

#ifdef __x86_64__
namespace avx512 {
extern const BlockSweeps<double> blockSweepTable;
extern const BlockSweeps<float> floatBlockSweepTable;
}  // namespace avx512
namespace avx2 {
extern const BlockSweeps<double> blockSweepTable;
extern const BlockSweeps<float> floatBlockSweepTable;
}  // namespace avx2
#endif
namespace baseline {
extern const BlockSweeps<double> blockSweepTable;
extern const BlockSweeps<float> floatBlockSweepTable;
}  // namespace baseline

}  // namespace zelsvm
