#include "platform/host/block/kernel_block.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/system/available_memory.h"
#include "rules/kernel_traits.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

constexpr double nanosecondsPerProduct = 0.03;
constexpr double nanosecondsPerSingleProduct = 0.1;
constexpr double nanosecondsPerSparseValue = 2.5;  // for all rows of a batch
constexpr double nanosecondsPerInvertedValue = 1.0;
// Rows packed together stay in the second-level cache.
constexpr std::uint64_t packedBytes = std::uint64_t{1} << 19;
// What is stored beyond that leaves the caches before anyone could read it.
constexpr std::uint64_t cachedBytes = std::uint64_t{4} << 20;
constexpr double chunkNanoseconds = 20000;
// From this share of stored elements on, dense columns are the faster ones (measured).
constexpr double denseShare = 0.4;
// They may take this part of what memory is left.
constexpr std::uint64_t memoryPart = 4;

// Absent elements are 0, but their products with an infinity would not be.
bool storesFiniteValues(const SampleChoice& samples) {
  const zelmag::AbstractMatrix<double>& matrix = samples.matrix();
  for (std::uint64_t i = 0; i < samples.count(); ++i)
    if (!std::all_of(matrix.values() + matrix.rowOffsets()[samples[i]],
                     matrix.values() + matrix.rowOffsets()[samples[i] + 1],
                     [](double value) { return std::isfinite(value); }))
      return false;
  return true;
}

bool densePays(const SampleChoice& columns, std::uint64_t elementBytes) {
  const zelmag::AbstractMatrix<double>& matrix = columns.matrix();
  if (!matrix.isSparse()) return true;
  const double elements = static_cast<double>(matrix.rows()) * static_cast<double>(matrix.cols());
  if (static_cast<double>(matrix.valueCount()) < denseShare * elements) return false;
  const double bytes = static_cast<double>(columns.count()) * static_cast<double>(matrix.cols()) *
                       static_cast<double>(elementBytes);
  return bytes <= static_cast<double>(zel::availableHostMemory() / memoryPart) &&
         storesFiniteValues(columns);
}

template <typename T>
std::uint64_t rowsTogether(std::uint64_t rowBytes) {
  return std::clamp<std::uint64_t>(packedBytes / rowBytes / groupRows<T>, 1, 128) * groupRows<T>;
}

std::uint64_t panelsTogether(double nanosecondsPerPanel) {
  return 1 + static_cast<std::uint64_t>(chunkNanoseconds / nanosecondsPerPanel);
}

}  // namespace

template <typename T>
void KernelBlock<T>::assign(const SampleChoice& columns, const KernelSettings& kernel) {
  chosen = columns;
  type = kernel.type;
  if (isGiven()) return given.assign(columns);
  constants = {kernel.gamma, kernel.coef0, effectiveDegree(kernel.degree)};
  functionNanoseconds = nanosecondsOf(type);
  isDense = densePays(columns, sizeof(T));
  if (isDense) return denseColumns.assign(columns);
  sparseColumns.assign(columns);
  sparseRows.setFeatures(columns.matrix().cols());
  inverted.clear();
}

template <typename T>
void KernelBlock<T>::compute(const SampleChoice& rows, const BlockUse<T>& use) {
  if (isGiven()) return given.compute(rows, use);
  computeBatches(rows, use, nullptr, 0);
}

template <typename T>
void KernelBlock<T>::computeAll(T* values, std::uint64_t pitch) {
  std::vector<T*> stored(columns());
  for (std::uint64_t r = 0; r < stored.size(); ++r) stored[r] = values + r * pitch;
  if (isGiven()) return given.compute(chosen, {stored, {}, {}});
  computeBatches(chosen, {stored, {}, {}}, values, pitch);
}

template <typename T>
void KernelBlock<T>::computeDiagonal(T* values) const {
  if (isGiven()) return given.computeDiagonal(values);
  if (hasUnitDiagonal(type)) {
    std::fill_n(values, columns(), T{1});
    return;
  }
  std::copy_n(norms(), columns(), values);
  blockSweeps<T>().transform[type](constants, values, norms(), columns(), T{});
}

template <typename T>
void KernelBlock<T>::computeBatches(const SampleChoice& rows, const BlockUse<T>& use, T* mirror,
                                    std::uint64_t mirrorPitch) {
  const std::uint64_t together =
      isDense ? rowsTogether<T>(rows.matrix().cols() * sizeof(T)) : groupRows<T>;
  const std::uint64_t functions = use.sums.size();
  for (std::uint64_t first = 0; first < rows.count(); first += together) {
    const std::uint64_t count = std::min(together, rows.count() - first);
    BlockTask<T> task{constants,
                      columns(),
                      norms(),
                      count,
                      nullptr,
                      use.stored.empty() ? nullptr : use.stored.data() + first,
                      use.then == nullptr && rows.count() * columns() * sizeof(T) > cachedBytes,
                      use.weights.data() + first * functions,
                      functions,
                      use.sums.data(),
                      mirror,
                      mirrorPitch,
                      first};
    isDense ? computeDense(rows.part(first, count), use, task)
            : computeSparse(rows.part(first, count), use, task);
  }
}

template <typename T>
double KernelBlock<T>::nanosecondsPerValue() const {
  if (isGiven()) return nanosecondsOf(type);
  const double products =
      isDense ? nanosecondsPerProduct * static_cast<double>(denseColumns.length())
              : nanosecondsPerSparseValue / static_cast<double>(groupRows<T>) *
                    static_cast<double>(sparseColumns.stored()) / static_cast<double>(columns());
  return products + functionNanoseconds;
}

template <typename T>
void KernelBlock<T>::finish(const BlockUse<T>& use, std::uint64_t begin, std::uint64_t end) const {
  const std::uint64_t width = blockSweeps<T>().panelColumns;
  if (use.then != nullptr) (*use.then)(begin * width, std::min(end * width, columns()));
}

template <typename T>
void KernelBlock<T>::computeDense(const SampleChoice& batch, const BlockUse<T>& use,
                                  BlockTask<T>& task) {
  denseRows.assign(batch);
  task.rowNorms = denseRows.norms();
  const DenseFactors<T> factors{denseColumns.values(), denseColumns.length(), denseRows.values(),
                                denseRows.length()};
  const BlockSweeps<T>& sweeps = blockSweeps<T>();
  const double product = task.rows == 1 ? nanosecondsPerSingleProduct : nanosecondsPerProduct;
  const double perPanel =
      static_cast<double>(task.rows * sweeps.panelColumns) *
      (product * static_cast<double>(denseColumns.length()) + functionNanoseconds);
  zel::forEachChunk(denseColumns.panels(), panelsTogether(perPanel), perPanel,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      sweeps.dense[type](task, factors, begin, end);
                      finish(use, begin, end);
                    });
}

template <typename T>
void KernelBlock<T>::computeSparse(const SampleChoice& batch, const BlockUse<T>& use,
                                   BlockTask<T>& task) {
  const BlockSweeps<T>& sweeps = blockSweeps<T>();
  const std::uint64_t panels = (columns() + sweeps.panelColumns - 1) / sweeps.panelColumns;
  if (task.rows == 1 && task.functions == 0 && task.mirror == nullptr && task.stored != nullptr &&
      computeSingle(batch, task))
    return finish(use, 0, panels);
  sparseRows.assign(batch);
  task.rowNorms = sparseRows.norms();
  SparseFactors<T> factors = sparseColumns.factors();
  factors.places = sparseRows.places();
  factors.lines = sparseRows.lines();
  const double perPanel =
      static_cast<double>(sparseColumns.stored()) / static_cast<double>(panels) *
          nanosecondsPerSparseValue +
      static_cast<double>(task.rows * sweeps.panelColumns) * functionNanoseconds;
  zel::forEachChunk(panels, panelsTogether(perPanel), perPanel,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      sweeps.sparse[type](task, factors, begin, end);
                      finish(use, begin, end);
                    });
}

// A row alone, where it meets few of the stored values; false where it does not.
template <typename T>
bool KernelBlock<T>::computeSingle(const SampleChoice& row, const BlockTask<T>& task) {
  sparseRows.readEntries(row.matrix(), row[0]);
  if (!inverted.isAssigned())
    inverted.assign(sparseColumns.factors(), columns(), chosen.matrix().cols());
  const double met = inverted.work(sparseRows.features());
  const double all = static_cast<double>(sparseColumns.stored());
  if (met * nanosecondsPerInvertedValue > all * nanosecondsPerSparseValue) return false;
  const double perColumn = met * nanosecondsPerInvertedValue / static_cast<double>(columns());
  const T norm = sparseRows.entryNorm();
  T* const values = task.stored[0];
  zel::forEachChunk(columns(), inverted.stretch(), perColumn + functionNanoseconds,
                    [&](std::uint64_t begin, std::uint64_t end) {
                      inverted.multiply(sparseRows.features(), sparseRows.values(), begin,
                                        values + begin);
                      blockSweeps<T>().transform[type](constants, values + begin,
                                                       task.columnNorms + begin, end - begin, norm);
                    });
  return true;
}

template class KernelBlock<double>;
template class KernelBlock<float>;

}  // namespace zelsvm
