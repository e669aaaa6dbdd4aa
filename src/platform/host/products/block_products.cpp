#include "platform/host/products/block_products.h"

#include <algorithm>
#include <limits>

#include "base/errors.h"
#include "platform/host/products/blas.h"
#include "platform/host/products/csr_sweeps.h"
#include "platform/host/products/dense_product.h"
#include "platform/system/available_memory.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// Work in one piece, in stored values; a row costs about as much as four values.
constexpr std::uint64_t pieceWork = 32768;
constexpr std::uint64_t rowWork = 4;
// From this share of stored elements on, dense products are the faster ones (measured).
constexpr double denseShare = 0.4;
// The dense copy may take this part of what memory is left.
constexpr std::uint64_t memoryPart = 4;

constexpr double nanosecondsPerValue = 0.7;
constexpr double nanosecondsPerPanelValue = 1.5;
constexpr double nanosecondsPerPackedLine = 8.0;
// Panels packed together stay in the second-level cache while the rows pass by.
constexpr std::uint64_t packedBytes = std::uint64_t{256} << 10;
constexpr std::uint64_t lineBytes = panelColumns * sizeof(double);

constexpr std::uint64_t mostBlasSize = std::numeric_limits<int>::max();

std::uint64_t panelsFor(std::uint64_t columns) {
  return (columns + panelColumns - 1) / panelColumns;
}

// Panels that are packed and multiplied in one go.
std::uint64_t groupPanels(std::uint64_t length, std::uint64_t columns) {
  return std::clamp<std::uint64_t>(packedBytes / (length * lineBytes), 1, panelsFor(columns));
}

// Is every row stored whole and in order?
bool isDenseAsStored(const zelmag::AbstractMatrix<double>& matrix) {
  const std::uint64_t cols = matrix.cols();
  const std::uint64_t count = matrix.valueCount();
  if (count / cols != matrix.rows() || count % cols != 0) return false;
  bool same = true;
  for (std::uint64_t i = 0; i < matrix.rows() && same; ++i) {
    const std::uint64_t first = i * cols;
    same = static_cast<std::uint64_t>(matrix.rowOffsets()[i]) == first;
    for (std::uint64_t j = 0; j < cols; ++j)
      same &= static_cast<std::uint64_t>(matrix.columnIndices()[first + j]) == j;
  }
  return same;
}

bool copyPays(const zelmag::AbstractMatrix<double>& matrix) {
  const double elements = static_cast<double>(matrix.rows()) * static_cast<double>(matrix.cols());
  const auto stored = static_cast<double>(matrix.valueCount());
  if (stored == 0 || stored < denseShare * elements) return false;
  return elements * sizeof(double) <= static_cast<double>(zel::availableHostMemory() / memoryPart);
}

int blasSize(std::uint64_t size) {
  if (size > mostBlasSize)
    throw zel::RuntimeException("The matrix is too large for the linear algebra library.");
  return static_cast<int>(size);
}

}  // namespace

const double* DenseRows::rows(std::uint64_t first, std::uint64_t count) {
  const std::uint64_t cols = matrix->cols();
  if (!matrix->isSparse()) return matrix->values() + first * cols;
  laidOut.resize(count * cols);
  for (std::uint64_t r = 0; r < count; ++r) matrix->copyRow(laidOut.at(r * cols), first + r, true);
  return laidOut.data();
}

BlockProducts::BlockProducts(const zelmag::AbstractMatrix<double>& matrix) : matrix(&matrix) {
  if (matrix.isSparse()) divide();
  if (!matrix.isSparse() || isDenseAsStored(matrix))
    dense = matrix.values();
  else if (copyPays(matrix))
    copyDense();
}

void BlockProducts::divide() {
  const int* const offsets = matrix->rowOffsets();
  firstRows.push_back(0);
  std::uint64_t work = 0;
  for (std::uint64_t i = 0; i < matrix->rows(); ++i) {
    work += rowWork + static_cast<std::uint64_t>(offsets[i + 1] - offsets[i]);
    if (work < pieceWork && i + 1 < matrix->rows()) continue;
    firstRows.push_back(i + 1);
    work = 0;
  }
}

void BlockProducts::copyDense() {
  const std::uint64_t cols = matrix->cols();
  copy.resize(matrix->rows() * cols);
  copy.fill(0);
  for (std::uint64_t i = 0; i < matrix->rows(); ++i)
    for (int p = matrix->rowOffsets()[i]; p < matrix->rowOffsets()[i + 1]; ++p)
      copy.data()[i * cols + static_cast<std::uint64_t>(matrix->columnIndices()[p])] +=
          matrix->values()[p];
  dense = copy.data();
  hasAbsent = true;
}

void BlockProducts::multiply(const double* block, std::uint64_t blockStride, double* result,
                             std::uint64_t resultStride, std::uint64_t count) {
  const Block all{block, blockStride, result, resultStride, count};
  if (denseServes(all)) return multiplyDense(all);
  if (count > 1) return multiplyPanels(all);
  forEachPiece(nanosecondsPerValue,
               [&](const CsrRows& piece) { csrSweeps().timesVector(piece, block, result); });
}

bool BlockProducts::denseServes(const Block& block) const {
  if (dense == nullptr) return false;
  if (matrix->isSparse() && std::max({matrix->rows(), matrix->cols(), block.stride,
                                      block.resultStride, block.count}) > mostBlasSize)
    return false;
  if (!hasAbsent) return true;
  double sum = 0;  // stays 0 as long as every element is finite
  for (std::uint64_t c = 0; c < block.count; ++c) {
    const double* const row = block.rows + c * block.stride;
    for (std::uint64_t i = 0; i < matrix->cols(); ++i) sum += row[i] * 0.0;
  }
  return sum == 0;
}

void BlockProducts::multiplyDense(const Block& block) const {
  requireBlas();
  const int rows = blasSize(matrix->rows());
  const int cols = blasSize(matrix->cols());
  denseProduct({false, rows, blasSize(block.count), cols, dense, cols, block.rows,
                blasSize(block.stride), 0, block.result, blasSize(block.resultStride)});
}

// Calls body for each piece of the rows, given what a stored value costs.
template <typename Body>
void BlockProducts::forEachPiece(double nanoseconds, const Body& body) const {
  zel::forEachChunk(firstRows.size() - 1, 1, nanoseconds * pieceWork,
                    [&](std::uint64_t piece, std::uint64_t) {
                      body(CsrRows{matrix->rowOffsets(), matrix->columnIndices(), matrix->values(),
                                   firstRows[piece], firstRows[piece + 1]});
                    });
}

void BlockProducts::multiplyPanels(const Block& block) {
  const std::uint64_t length = matrix->cols();
  const std::uint64_t group = groupPanels(length, block.count);
  packed.resize(group * length * panelColumns);
  for (std::uint64_t first = 0; first < block.count; first += group * panelColumns) {
    const std::uint64_t panels = std::min(group, panelsFor(block.count - first));
    packPanels(block, first, panels);
    forEachPiece(nanosecondsPerPanelValue * static_cast<double>(panels), [&](const CsrRows& piece) {
      for (std::uint64_t p = 0; p < panels; ++p) {
        const std::uint64_t column = first + p * panelColumns;
        const auto columns =
            static_cast<int>(std::min<std::uint64_t>(panelColumns, block.count - column));
        csrSweeps().timesPanel(piece, packed.data() + p * length * panelColumns, columns,
                               block.result + column * block.resultStride, block.resultStride);
      }
    });
  }
}

// Lays rows of the block side by side, from first on, panelColumns in each panel; missing ones are
// 0.
void BlockProducts::packPanels(const Block& block, std::uint64_t first, std::uint64_t panels) {
  const std::uint64_t length = matrix->cols();
  zel::forEachChunk(length, 1024, nanosecondsPerPackedLine * static_cast<double>(panels),
                    [&](std::uint64_t begin, std::uint64_t end) {
                      for (std::uint64_t p = 0; p < panels; ++p) {
                        double* const panel = packed.data() + p * length * panelColumns;
                        const std::uint64_t column = first + p * panelColumns;
                        const std::uint64_t columns =
                            std::min<std::uint64_t>(panelColumns, block.count - column);
                        std::fill(panel + begin * panelColumns, panel + end * panelColumns, 0.0);
                        for (std::uint64_t c = 0; c < columns; ++c) {
                          const double* const row = block.rows + (column + c) * block.stride;
                          for (std::uint64_t j = begin; j < end; ++j)
                            panel[j * panelColumns + c] = row[j];
                        }
                      }
                    });
}

}  // namespace zelsvm
