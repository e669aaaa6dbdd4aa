#include "platform/host/csr_product.h"

#include <algorithm>
#include <limits>

#include "platform/host/csr_kernels.h"
#include "platform/host/dense_product.h"
#include "platform/host/parallel.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

constexpr double nanosecondsPerValue = 0.7;
constexpr double nanosecondsPerPanelValue = 1.5;
constexpr double nanosecondsPerPackedLine = 8.0;
constexpr double pieceValues = 32768;
// Panels packed together stay in the second-level cache while the rows pass by.
constexpr std::int64_t packedBytes = std::int64_t{256} << 10;

CsrKernels kernels() { return csrKernels(processorIsa()); }

std::int64_t panelsFor(std::int64_t columns) { return (columns + panelColumns - 1) / panelColumns; }

std::int64_t lineBytes() { return panelColumns * static_cast<std::int64_t>(sizeof(double)); }

// Panels that are packed and multiplied in one go.
std::int64_t groupPanels(std::int64_t rows, std::int64_t columns) {
  return std::clamp<std::int64_t>(packedBytes / (rows * lineBytes()), 1, panelsFor(columns));
}

template <typename Body>
void forEachPiece(const CsrMatrix& A, double nanoseconds, const Body& body) {
  const auto& pieces = A.pieces();
  forEachChunk(pieces.size() - 1, 1, nanoseconds, [&](std::uint64_t piece, std::uint64_t) {
    const CsrArrays& a = A.arrays();
    body(CsrRows{a.offsets, a.indices, a.values, pieces[piece], pieces[piece + 1]});
  });
}

bool allFinite(const Columns<const double>& B, std::int64_t rows) {
  double sum = 0;  // stays 0 as long as every element is finite
  for (std::int64_t c = 0; c < B.count; ++c) {
    const double* const column = B.elements + c * B.leading;
#pragma omp simd reduction(+ : sum)
    for (std::int64_t i = 0; i < rows; ++i) sum += column[i] * 0.0;
  }
  return sum == 0;
}

bool denseServes(const CsrMatrix& A, const Columns<const double>& B, const Columns<double>& C) {
  constexpr std::int64_t most = std::numeric_limits<int>::max();
  const CsrArrays& a = A.arrays();
  if (A.dense() == nullptr || std::max({a.rows, a.cols, B.leading, C.leading, B.count}) > most)
    return false;
  return !A.hasAbsent() || allFinite(B, a.cols);
}

void multiplyDense(const CsrMatrix& A, double alpha, const Columns<const double>& B, double beta,
                   const Columns<double>& C) {
  const int rows = static_cast<int>(A.arrays().rows);
  const int cols = static_cast<int>(A.arrays().cols);
  denseProduct({true, false, rows, static_cast<int>(B.count), cols, alpha, A.dense(), cols,
                B.elements, static_cast<int>(B.leading), beta, C.elements,
                static_cast<int>(C.leading)});
}

// Lays columns first … first + panelColumns - 1 side by side; missing ones are 0.
void packPanel(const Columns<const double>& B, std::int64_t first, std::int64_t begin,
               std::int64_t end, double* panel) {
  const std::int64_t columns = std::min<std::int64_t>(panelColumns, B.count - first);
  std::fill(panel + begin * panelColumns, panel + end * panelColumns, 0.0);
  for (std::int64_t c = 0; c < columns; ++c) {
    const double* const column = B.elements + (first + c) * B.leading;
    for (std::int64_t j = begin; j < end; ++j) panel[j * panelColumns + c] = column[j];
  }
}

void packGroup(const Columns<const double>& B, std::int64_t rows, std::int64_t first,
               std::int64_t panels, double* buffer) {
  forEachChunk(static_cast<std::uint64_t>(rows), 1024,
               nanosecondsPerPackedLine * static_cast<double>(panels),
               [&](std::uint64_t begin, std::uint64_t end) {
                 for (std::int64_t p = 0; p < panels; ++p)
                   packPanel(B, first + p * panelColumns, static_cast<std::int64_t>(begin),
                             static_cast<std::int64_t>(end), buffer + p * rows * panelColumns);
               });
}

void multiplyPanels(const CsrMatrix& A, double alpha, const Columns<const double>& B, double beta,
                    const Columns<double>& C, double* buffer) {
  const std::int64_t rows = A.arrays().cols;
  const std::int64_t group = groupPanels(rows, B.count);
  for (std::int64_t first = 0; first < B.count; first += group * panelColumns) {
    const std::int64_t panels = std::min(group, panelsFor(B.count - first));
    packGroup(B, rows, first, panels, buffer);
    const double perPiece = nanosecondsPerPanelValue * pieceValues * static_cast<double>(panels);
    forEachPiece(A, perPiece, [&](const CsrRows& piece) {
      for (std::int64_t p = 0; p < panels; ++p) {
        const std::int64_t column = first + p * panelColumns;
        const auto columns =
            static_cast<int>(std::min<std::int64_t>(panelColumns, B.count - column));
        kernels().timesPanel(piece, alpha, buffer + p * rows * panelColumns, columns, beta,
                             C.elements + column * C.leading, C.leading);
      }
    });
  }
}

}  // namespace

std::size_t csrProductBuffer(const CsrMatrix& A, std::int64_t columns) {
  const std::int64_t rows = A.arrays().cols;
  if (columns <= 1 || rows == 0 || A.arrays().rows == 0) return 0;
  return static_cast<std::size_t>(groupPanels(rows, columns) * rows * lineBytes());
}

void csrProduct(const CsrMatrix& A, double alpha, const Columns<const double>& B, double beta,
                const Columns<double>& C, double* buffer) {
  if (A.arrays().rows == 0 || B.count == 0) return;
  if (denseServes(A, B, C)) return multiplyDense(A, alpha, B, beta, C);
  if (B.count > 1 && A.arrays().cols > 0) return multiplyPanels(A, alpha, B, beta, C, buffer);
  for (std::int64_t c = 0; c < B.count; ++c)
    forEachPiece(A, nanosecondsPerValue * pieceValues, [&](const CsrRows& piece) {
      kernels().timesVector(piece, alpha, B.elements + c * B.leading, beta,
                            C.elements + c * C.leading);
    });
}

}  // namespace zel::inline ZEL_PLATFORM
