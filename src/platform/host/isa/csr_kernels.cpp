#include "platform/host/csr_kernels.h"

namespace zel::inline ZEL_PLATFORM {
namespace ZEL_ISA {
namespace {

__attribute__((always_inline)) inline double multiplyAdd(double a, double b, double c) {
#if defined(__FP_FAST_FMA) || defined(__FMA__)
  return __builtin_fma(a, b, c);
#else
  return a * b + c;
#endif
}

__attribute__((always_inline)) inline double scaled(double alpha, double sum, double beta,
                                                    const double* old) {
  return beta == 0 ? alpha * sum : alpha * sum + beta * *old;
}

// Four running sums hide the latency of an addition. Indexed loads beat gathers here.
__attribute__((always_inline)) inline double rowTimesVector(const CsrRows& rows, std::int64_t row,
                                                            const double* x) {
  const int end = rows.offsets[row + 1];
  int p = rows.offsets[row];
  double sums[4] = {0, 0, 0, 0};
  for (; p + 4 <= end; p += 4)
    for (int s = 0; s < 4; ++s)
      sums[s] = multiplyAdd(rows.values[p + s], x[rows.indices[p + s]], sums[s]);
  for (; p < end; ++p) sums[0] = multiplyAdd(rows.values[p], x[rows.indices[p]], sums[0]);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

__attribute__((always_inline)) inline void addEntry(const CsrRows& rows, int p, const double* panel,
                                                    double* sums) {
  const double value = rows.values[p];
  const double* const line = panel + std::int64_t{rows.indices[p]} * panelColumns;
#pragma omp simd
  for (int c = 0; c < panelColumns; ++c) sums[c] = multiplyAdd(value, line[c], sums[c]);
}

__attribute__((always_inline)) inline void rowTimesPanel(const CsrRows& rows, std::int64_t row,
                                                         const double* panel, double* sums) {
  const int end = rows.offsets[row + 1];
  int p = rows.offsets[row];
  double odd[panelColumns] = {};
  for (; p + 2 <= end; p += 2) {
    addEntry(rows, p, panel, sums);
    addEntry(rows, p + 1, panel, odd);
  }
  if (p < end) addEntry(rows, p, panel, sums);
#pragma omp simd
  for (int c = 0; c < panelColumns; ++c) sums[c] += odd[c];
}

}  // namespace

void timesVector(const CsrRows& rows, double alpha, const double* x, double beta, double* y) {
  for (std::int64_t row = rows.begin; row < rows.end; ++row)
    y[row] = scaled(alpha, rowTimesVector(rows, row, x), beta, y + row);
}

void timesPanel(const CsrRows& rows, double alpha, const double* panel, int columns, double beta,
                double* C, std::int64_t ldc) {
  for (std::int64_t row = rows.begin; row < rows.end; ++row) {
    double sums[panelColumns] = {};
    rowTimesPanel(rows, row, panel, sums);
    for (int c = 0; c < columns; ++c) {
      double* const target = C + row + c * ldc;
      *target = scaled(alpha, sums[c], beta, target);
    }
  }
}

}  // namespace ZEL_ISA
}  // namespace zel::inline ZEL_PLATFORM
