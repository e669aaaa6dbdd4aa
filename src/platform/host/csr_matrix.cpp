#include "platform/host/csr_matrix.h"

#include <atomic>

#include "platform/host/parallel.h"
#include "platform/system/available_memory.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

// Work in one piece, in stored values; a row costs about as much as four values.
constexpr std::int64_t pieceWork = 32768;
constexpr std::int64_t rowWork = 4;

// From this share of stored elements on, dense products are the faster ones (measured).
constexpr double denseShare = 0.4;
// The dense copy may take this part of what memory is left.
constexpr std::uint64_t memoryPart = 4;

constexpr std::uint64_t checkGrain = 65536;
constexpr double checkNanoseconds = 0.5;

bool offsetsAscend(const CsrArrays& a) {
  if (a.offsets[0] != 0 || a.offsets[a.rows] != a.nnz) return false;
  bool ascending = true;
  for (std::int64_t i = 0; i < a.rows; ++i) ascending &= a.offsets[i] <= a.offsets[i + 1];
  return ascending;
}

bool columnsInRange(const CsrArrays& a) {
  std::atomic<bool> good = true;
  forEachChunk(static_cast<std::uint64_t>(a.nnz), checkGrain, checkNanoseconds,
               [&](std::uint64_t begin, std::uint64_t end) {
                 bool inRange = true;
                 for (std::uint64_t p = begin; p < end; ++p)
                   inRange &= a.indices[p] >= 0 && a.indices[p] < a.cols;
                 if (!inRange) good = false;
               });
  return good;
}

// For a matrix with rows x cols stored values.
bool isDenseAsStored(const CsrArrays& a) {
  bool same = true;
  for (std::int64_t i = 0; i < a.rows && same; ++i) {
    const std::int64_t first = i * a.cols;
    same = a.offsets[i] == first;
    for (std::int64_t j = 0; j < a.cols; ++j) same &= a.indices[first + j] == j;
  }
  return same;
}

bool copyPays(const CsrArrays& a) {
  const double elements = static_cast<double>(a.rows) * static_cast<double>(a.cols);
  if (a.nnz == 0 || static_cast<double>(a.nnz) < denseShare * elements) return false;
  return elements * sizeof(double) <= static_cast<double>(availableHostMemory() / memoryPart);
}

}  // namespace

std::optional<CsrMatrix> CsrMatrix::inspect(const CsrArrays& arrays) {
  if (!offsetsAscend(arrays) || !columnsInRange(arrays)) return std::nullopt;
  CsrMatrix matrix(arrays);
  matrix.divide();
  const bool full =
      arrays.nnz > 0 && arrays.nnz / arrays.cols == arrays.rows && arrays.nnz % arrays.cols == 0;
  matrix.inOrder = full && isDenseAsStored(arrays);
  matrix.absent = !matrix.inOrder;
  if (matrix.absent && copyPays(arrays)) matrix.copyDense();
  return matrix;
}

void CsrMatrix::divide() {
  firstRows.push_back(0);
  std::int64_t work = 0;
  for (std::int64_t i = 0; i < stored.rows; ++i) {
    work += rowWork + stored.offsets[i + 1] - stored.offsets[i];
    if (work < pieceWork && i + 1 < stored.rows) continue;
    firstRows.push_back(i + 1);
    work = 0;
  }
}

void CsrMatrix::copyDense() {
  const auto cols = static_cast<std::size_t>(stored.cols);
  copy.resize(static_cast<std::size_t>(stored.rows) * cols);
  for (std::int64_t i = 0; i < stored.rows; ++i)
    for (std::int64_t p = stored.offsets[i]; p < stored.offsets[i + 1]; ++p)
      copy[static_cast<std::size_t>(i) * cols + static_cast<std::size_t>(stored.indices[p])] +=
          stored.values[p];
}

}  // namespace zel::inline ZEL_PLATFORM
