#include "platform/host/block/block_sweeps.h"

#include <hwy/cache_control.h>

#include "platform/host/isa/tiles.h"
#include "platform/host/isa/transpose.h"
#include "platform/host/isa/vector_math.h"

namespace zelsvm::ZEL_ISA {
namespace {

constexpr std::uint64_t least(std::uint64_t a, std::uint64_t b) { return a < b ? a : b; }

// Values of a group of rows with a panel's columns, row by row.
template <typename T>
struct alignas(64) Group {
  T values[groupRows<T> * tileColumns<T>];
  HWY_INLINE T* row(std::uint64_t r) { return values + r * tileColumns<T>; }
};

// A panel's part of the arrays that go along the columns.
template <typename T>
struct Place {
  std::uint64_t first;    // column
  std::uint64_t columns;  // that the arrays have room for
  HWY_INLINE bool whole() const { return columns == tileColumns<T>; }

  HWY_INLINE Place(const BlockTask<T>& task, std::uint64_t panel) : first(panel * tileColumns<T>) {
    constexpr std::uint64_t step = 64 / sizeof(T);
    columns = least(tileColumns<T>, (task.columns + step - 1) / step * step - first);
  }
};

template <typename T>
HWY_INLINE void copyLanes(const T* from, T* to, std::uint64_t count) {
  for (std::uint64_t c = 0; c < count; c += Lanes<T>::count) Lanes<T>::load(from + c).store(to + c);
}

// Past the caches.
template <typename T>
HWY_INLINE void streamLanes(const T* from, T* to, std::uint64_t count) {
  for (std::uint64_t c = 0; c < count; c += Lanes<T>::count)
    hn::Stream(Lanes<T>::load(from + c).v, typename Lanes<T>::Tag(), to + c);
}

// Of a symmetric block, rows behind a panel's last column are left out: they are mirrored.
template <typename T>
HWY_INLINE std::uint64_t rowsFor(const BlockTask<T>& task, std::uint64_t panel) {
  if (task.mirror == nullptr) return task.rows;
  const std::uint64_t end = (panel + 1) * tileColumns<T>;
  return end <= task.firstRow ? 0 : least(task.rows, end - task.firstRow);
}

template <typename T>
HWY_INLINE void multiply(const DenseFactors<T>& factors, std::uint64_t panel,
                         std::uint64_t firstRow, std::uint64_t rows, Group<T>& group) {
  const std::uint64_t panelSize = factors.columnLength * tileColumns<T>;
  const std::uint64_t length = least(factors.columnLength, factors.rowLength);
  forEachTile(rows, [&]<unsigned height>(std::uint64_t first) HWY_ATTR {
    T* out[height];
    for (unsigned r = 0; r < height; ++r) out[r] = group.row(first + r);
    multiplyTile<T, height, 1, Sums::fromZero>(
        factors.tiles + (firstRow + first) * factors.rowLength, height,
        factors.panels + panel * panelSize, panelSize, length, out);
  });
}

// Products of one column with rows firstRow … firstRow + vectors * lanes - 1.
template <typename T, std::uint64_t vectors>
HWY_INLINE void multiplySparseColumn(const SparseFactors<T>& factors, std::uint64_t column,
                                     std::uint64_t firstRow, T* products) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  Lanes<T> sums[vectors];
  ZEL_UNROLLED for (std::uint64_t v = 0; v < vectors; ++v) sums[v] = Lanes<T>(0.0);
  const std::uint64_t end = factors.ends[column];
  for (std::uint64_t p = factors.begins[column]; p < end; ++p) {
    const Lanes<T> value = Lanes<T>::all(static_cast<T>(factors.values[p]));
    const T* const line = factors.lines + factors.places[factors.features[p]] * groupRows<T>;
    ZEL_UNROLLED for (std::uint64_t v = 0; v < vectors; ++v) sums[v] =
        fusedMultiplyAdd(value, Lanes<T>::load(line + firstRow + v * lanes), sums[v]);
  }
  ZEL_UNROLLED for (std::uint64_t v = 0; v < vectors; ++v) sums[v].store(products + v * lanes);
}

// As many rows at a time as there are registers for.
template <typename T, std::uint64_t vectors>
HWY_INLINE void multiplySparse(const BlockTask<T>& task, const SparseFactors<T>& factors,
                               const Place<T>& place, Group<T>& group) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  constexpr std::uint64_t together = vectors * lanes;
  alignas(64) T products[tileColumns<T> * together];
  const std::uint64_t count = least(tileColumns<T>, task.columns - place.first);
  for (std::uint64_t c = count * together; c < tileColumns<T> * together; ++c) products[c] = 0;
  for (std::uint64_t row = 0; row < task.rows; row += together) {
    for (std::uint64_t c = 0; c < count; ++c)
      multiplySparseColumn<T, vectors>(factors, place.first + c, row, products + c * together);
    ZEL_UNROLLED for (unsigned v = 0; v < tileVectors; ++v) for (std::uint64_t r = 0; r < together;
                                                                 r += lanes)
        transpose(products + v * lanes * together + r, together, group.row(row + r) + v * lanes,
                  tileColumns<T>);
  }
}

template <typename Function, typename T>
HWY_INLINE Lanes<T> kernelLanes(const KernelConstants& c, Lanes<T> product, Lanes<T> normA,
                                Lanes<T> normB) {
  return Function::function(c, Function::argument(c, product, normA, normB), Lanes<T>(1.0));
}

// Products become kernel values, which are stored where that is asked for.
template <typename Function, typename T>
HWY_INLINE void finish(const BlockTask<T>& task, const Place<T>& place, std::uint64_t firstRow,
                       std::uint64_t rows, Group<T>& group) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  const KernelConstants constants = task.constants;
  for (std::uint64_t r = 0; r < rows; ++r) {
    T* const values = group.row(r);
    const Lanes<T> norm = Lanes<T>::all(task.rowNorms[firstRow + r]);
    ZEL_UNROLLED for (unsigned v = 0; v < tileVectors; ++v)
        kernelLanes<Function>(constants, Lanes<T>::load(values + v * lanes), norm,
                              Lanes<T>::load(task.columnNorms + place.first + v * lanes))
            .store(values + v * lanes);
    T* const stored = task.stored == nullptr ? nullptr : task.stored[firstRow + r];
    if (stored == nullptr) continue;
    if (task.streamed)
      streamLanes(values, stored + place.first, place.columns);
    else
      copyLanes(values, stored + place.first, place.columns);
  }
}

// Adds the group to sums of which it has all columns.
template <typename T, unsigned height>
HWY_INLINE void addToSums(const T* weights, std::uint64_t functions, std::uint64_t rows,
                          const Place<T>& place, const Group<T>& group, T* const* sums) {
  alignas(64) T partial[height * tileColumns<T>] = {};
  T* out[height];
  for (unsigned f = 0; f < height; ++f) {
    out[f] = sums[f] + place.first;
    if (place.whole()) continue;
    copyLanes(out[f], partial + f * tileColumns<T>, place.columns);
    out[f] = partial + f * tileColumns<T>;
  }
  multiplyTile<T, height, 1, Sums::continued>(weights, functions, group.values, 0, rows, out);
  if (place.whole()) return;
  for (unsigned f = 0; f < height; ++f) copyLanes(out[f], sums[f] + place.first, place.columns);
}

// The group turned over, as far as its rows stand before the panel's columns; those within the
// panel have been stored as they are.
template <typename T>
HWY_INLINE void mirrorGroup(const BlockTask<T>& task, const Place<T>& place, std::uint64_t firstRow,
                            std::uint64_t rows, const Group<T>& group) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  alignas(64) T turned[lanes * lanes];
  const std::uint64_t before = task.firstRow + firstRow;
  if (before >= place.first) return;
  const std::uint64_t end = least(rows, place.first - before);
  for (std::uint64_t c = 0; c < tileColumns<T>; c += lanes)
    for (std::uint64_t r = 0; r < end; r += lanes) {
      transpose(group.values + r * tileColumns<T> + c, tileColumns<T>, turned, lanes);
      for (std::uint64_t k = 0; k < lanes && place.first + c + k < task.columns; ++k)
        copyLanes(turned + k * lanes,
                  task.mirror + (place.first + c + k) * task.mirrorPitch + before + r, lanes);
    }
}

template <typename Function, typename T>
HWY_INLINE void useGroup(const BlockTask<T>& task, const Place<T>& place, std::uint64_t firstRow,
                         std::uint64_t rows, Group<T>& group) {
  finish<Function>(task, place, firstRow, rows, group);
  if (task.mirror != nullptr) mirrorGroup(task, place, firstRow, rows, group);
  forEachTile(task.functions, [&]<unsigned height>(std::uint64_t first) HWY_ATTR {
    addToSums<T, height>(task.weights + firstRow * task.functions + first, task.functions, rows,
                         place, group, task.sums + first);
  });
}

// One row has too few sums in a panel to keep the multipliers busy, so it takes two at once.
template <typename Function, typename T>
HWY_INLINE std::uint64_t makeSingleRow(const BlockTask<T>& task, const DenseFactors<T>& factors,
                                       std::uint64_t panel, std::uint64_t end) {
  const std::uint64_t panelSize = factors.columnLength * tileColumns<T>;
  const std::uint64_t length = least(factors.columnLength, factors.rowLength);
  alignas(64) T products[2 * tileColumns<T>];
  Group<T> group;
  for (; panel + 2 <= end; panel += 2) {
    T* out[] = {products};
    multiplyTile<T, 1, 2, Sums::fromZero>(factors.tiles, 1, factors.panels + panel * panelSize,
                                          panelSize, length, out);
    for (std::uint64_t p = 0; p < 2; ++p) {
      copyLanes(products + p * tileColumns<T>, group.values, tileColumns<T>);
      useGroup<Function>(task, Place<T>(task, panel + p), 0, 1, group);
    }
  }
  return panel;
}

template <typename Function, typename T>
void makeDense(const BlockTask<T>& task, const DenseFactors<T>& factors, std::uint64_t begin,
               std::uint64_t end) {
  Group<T> group;
  if (task.rows == 1 && task.mirror == nullptr)
    begin = makeSingleRow<Function>(task, factors, begin, end);
  for (std::uint64_t panel = begin; panel < end; ++panel) {
    const Place<T> place(task, panel);
    const std::uint64_t all = rowsFor(task, panel);
    for (std::uint64_t first = 0; first < all; first += groupRows<T>) {
      // Tiles were cut from all rows.
      const std::uint64_t rows = least(groupRows<T>, task.rows - first);
      multiply(factors, panel, first, rows, group);
      useGroup<Function>(task, place, first, rows, group);
    }
  }
  if (task.streamed) hwy::FlushStream();
}

template <typename Function, typename T>
void makeSparse(const BlockTask<T>& task, const SparseFactors<T>& factors, std::uint64_t begin,
                std::uint64_t end) {
  // Rows that registers hold sums of, and less where there are fewer.
  constexpr std::uint64_t lanes = Lanes<T>::count;
  constexpr std::uint64_t most = least(groupRows<T>, 8 * lanes) / lanes;
  constexpr std::uint64_t half = most / 2;
  constexpr std::uint64_t few = most / 4;
  Group<T> group;
  for (std::uint64_t panel = begin; panel < end; ++panel) {
    if (rowsFor(task, panel) == 0) continue;
    const Place<T> place(task, panel);
    if (task.rows <= few * lanes)
      multiplySparse<T, few>(task, factors, place, group);
    else if (task.rows <= half * lanes)
      multiplySparse<T, half>(task, factors, place, group);
    else
      multiplySparse<T, most>(task, factors, place, group);
    useGroup<Function>(task, place, 0, task.rows, group);
  }
  if (task.streamed) hwy::FlushStream();
}

template <typename Function, typename T>
void transform(const KernelConstants& constants, T* products, const T* norms, std::uint64_t count,
               T norm) {
  const KernelConstants c = constants;
  const Lanes<T> own = Lanes<T>::all(norm);
  for (std::uint64_t i = 0; i < count; i += Lanes<T>::count)
    kernelLanes<Function>(c, Lanes<T>::load(products + i), own, Lanes<T>::load(norms + i))
        .store(products + i);
}

// A column at a time where they fill no vector: every lane does the same then.
template <typename T>
void sumSquares(const T* values, std::uint64_t length, std::uint64_t stride, T* norms) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  const typename Lanes<T>::Tag tag;
  const bool wide = stride % lanes == 0;
  for (std::uint64_t i = 0; i < stride; i += wide ? lanes : 1) {
    Lanes<T> sum = 0.0;
    for (std::uint64_t k = 0; k < length; ++k) {
      const T* const at = values + k * stride + i;
      const Lanes<T> value = wide ? Lanes<T>(hn::LoadU(tag, at)) : Lanes<T>::all(*at);
      sum = fusedMultiplyAdd(value, value, sum);
    }
    if (wide)
      hn::StoreU(sum.v, tag, norms + i);
    else
      norms[i] = hn::GetLane(sum.v);
  }
}

HWY_INLINE double fused(double a, double b, double c) { return fusedMultiplyAdd(a, b, c); }
HWY_INLINE float fused(float a, float b, float c) {
#if defined(__FP_FAST_FMAF) || defined(__FMA__)
  return __builtin_fmaf(a, b, c);
#else
  return a * b + c;
#endif
}

template <typename T>
void addColumn(const T* values, const unsigned* positions, std::uint64_t begin, std::uint64_t end,
               T factor, T* sums) {
  for (std::uint64_t p = begin; p < end; ++p)
    sums[positions[p]] = fused(factor, values[p], sums[positions[p]]);
}

template <typename T, unsigned packs>
HWY_INLINE void addToPacks(const T* const* rows, const T* weights, std::uint64_t count,
                           std::uint64_t c, T* sums) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  Lanes<T> totals[packs];
  ZEL_UNROLLED for (unsigned u = 0; u < packs; ++u) totals[u] =
      Lanes<T>::load(sums + c + u * lanes);
  for (std::uint64_t r = 0; r < count; ++r) {
    const Lanes<T> weight = Lanes<T>::all(weights[r]);
    ZEL_UNROLLED for (unsigned u = 0; u < packs; ++u) totals[u] =
        fusedMultiplyAdd(weight, Lanes<T>::load(rows[r] + c + u * lanes), totals[u]);
  }
  ZEL_UNROLLED for (unsigned u = 0; u < packs; ++u) totals[u].store(sums + c + u * lanes);
}

template <typename T>
void addRows(const T* const* rows, const T* weights, std::uint64_t count, std::uint64_t begin,
             std::uint64_t end, T* sums) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  constexpr unsigned packs = 8;
  std::uint64_t c = begin;
  for (; c + packs * lanes <= end; c += packs * lanes)
    addToPacks<T, packs>(rows, weights, count, c, sums);
  for (; c < end; c += lanes) addToPacks<T, 1>(rows, weights, count, c, sums);
}

template <unsigned type, typename T>
constexpr void addKernels(BlockSweeps<T>& table) {
  using Function = KernelFunction<static_cast<SVM_KERNEL>(type)>;
  table.dense[type] = makeDense<Function, T>;
  table.sparse[type] = makeSparse<Function, T>;
  table.transform[type] = transform<Function, T>;
  if constexpr (type + 1 < SVM_KERNEL_UNSUPPORTED) addKernels<type + 1>(table);
}

template <typename T>
constexpr BlockSweeps<T> makeTable() {
  BlockSweeps<T> table{tileColumns<T>, tallTile,     {},        {}, {},
                       sumSquares<T>,  addColumn<T>, addRows<T>};
  addKernels<0>(table);
  return table;
}

}  // namespace

extern const BlockSweeps<double> blockSweepTable;
extern const BlockSweeps<float> floatBlockSweepTable;
constinit const BlockSweeps<double> blockSweepTable = makeTable<double>();
constinit const BlockSweeps<float> floatBlockSweepTable = makeTable<float>();

}  // namespace zelsvm::ZEL_ISA
