#include "platform/host/block/given_block.h"

#include <algorithm>

#include "platform/host/block/block_sweeps.h"
#include "threads/first_failure.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

constexpr double nanosecondsPerValue = 1.0;
constexpr double nanosecondsPerSum = 0.2;
// Values that a thread reads, or sums that it adds to, at a time: a multiple of 64 bytes.
constexpr std::uint64_t stretchColumns = 4096;
constexpr std::uint64_t stretchSums = 1024;

}  // namespace

template <typename T>
void GivenBlock<T>::compute(const SampleChoice& rows, const BlockUse<T>& use) {
  const zelmag::KernelValues& source = *rows.matrix().kernelValues();
  columns.resize(chosen.count());
  for (std::uint64_t c = 0; c < columns.size(); ++c)
    columns[c] = source.columnOf(chosen.matrix().rowNumber(chosen[c]));
  const std::uint64_t pitch = blockPitch<T>(columns.size());
  scratch.resize(groupRows<T> * pitch);
  for (std::uint64_t first = 0; first < rows.count(); first += groupRows<T>) {
    const std::uint64_t count = std::min(groupRows<T>, rows.count() - first);
    T* targets[groupRows<T>];
    for (std::uint64_t r = 0; r < count; ++r) {
      T* const stored = use.stored.empty() ? nullptr : use.stored[first + r];
      targets[r] = stored != nullptr ? stored : scratch.data() + r * pitch;
    }
    read(source, rows.part(first, count), targets);
    if (!use.sums.empty())
      add(targets, count, use.weights.data() + first * use.sums.size(), use.sums);
  }
  if (use.then != nullptr)
    zel::forEachChunk(columns.size(), stretchSums,
                      nanosecondsPerSum * static_cast<double>(rows.count()), *use.then);
}

template <typename T>
void GivenBlock<T>::read(const zelmag::KernelValues& source, const SampleChoice& rows,
                         T* const* targets) {
  const auto numberOf = [&rows](std::uint64_t r) { return rows.matrix().rowNumber(rows[r]); };
  if (!source.isShared()) {
    for (std::uint64_t r = 0; r < rows.count(); ++r) source.read(targets[r], numberOf(r), columns);
    return;
  }
  const std::uint64_t stretches = (columns.size() + stretchColumns - 1) / stretchColumns;
  const double perStretch =
      nanosecondsPerValue * static_cast<double>(columns.size()) / static_cast<double>(stretches);
  zel::forEachGuarded(rows.count() * stretches, perStretch, [&](std::uint64_t item) {
    const std::uint64_t r = item / stretches;
    const std::uint64_t begin = item % stretches * stretchColumns;
    const std::uint64_t count = std::min(stretchColumns, columns.size() - begin);
    source.read(targets[r] + begin, numberOf(r), std::span(columns).subspan(begin, count));
  });
}

template <typename T>
void GivenBlock<T>::add(const T* const* rows, std::uint64_t count, const T* weights,
                        std::span<T* const> sums) const {
  for (std::uint64_t f = 0; f < sums.size(); ++f) {
    T own[groupRows<T>];
    for (std::uint64_t r = 0; r < count; ++r) own[r] = weights[r * sums.size() + f];
    zel::forEachChunk(columns.size(), stretchSums, nanosecondsPerSum * static_cast<double>(count),
                      [&](std::uint64_t begin, std::uint64_t end) {
                        blockSweeps<T>().addRows(rows, own, count, begin, end, sums[f]);
                      });
  }
}

template <typename T>
void GivenBlock<T>::computeDiagonal(T* values) const {
  const zelmag::AbstractMatrix<double>& matrix = chosen.matrix();
  for (std::uint64_t c = 0; c < chosen.count(); ++c)
    values[c] = static_cast<T>(matrix.kernelValues()->diagonal(matrix.rowNumber(chosen[c])));
}

template class GivenBlock<double>;
template class GivenBlock<float>;

}  // namespace zelsvm
