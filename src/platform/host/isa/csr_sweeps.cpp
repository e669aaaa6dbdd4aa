#include "platform/host/products/csr_sweeps.h"

#include "rules/kernel_rules.h"

namespace zelsvm::ZEL_ISA {
namespace {

// Four running sums hide the latency of an addition. Indexed loads beat gathers here.
ZEL_RULE double rowTimesVector(const CsrRows& rows, std::uint64_t row, const double* x) {
  const int end = rows.offsets[row + 1];
  int p = rows.offsets[row];
  double sums[4] = {0, 0, 0, 0};
  for (; p + 4 <= end; p += 4)
    for (int s = 0; s < 4; ++s)
      sums[s] = fusedMultiplyAdd(rows.values[p + s], x[rows.columns[p + s]], sums[s]);
  for (; p < end; ++p) sums[0] = fusedMultiplyAdd(rows.values[p], x[rows.columns[p]], sums[0]);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

ZEL_RULE void addEntry(const CsrRows& rows, int p, const double* panel, double* sums) {
  const double value = rows.values[p];
  const double* const line = panel + std::int64_t{rows.columns[p]} * panelColumns;
#pragma omp simd
  for (int c = 0; c < panelColumns; ++c) sums[c] = fusedMultiplyAdd(value, line[c], sums[c]);
}

ZEL_RULE void rowTimesPanel(const CsrRows& rows, std::uint64_t row, const double* panel,
                            double* sums) {
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

void timesVector(const CsrRows& rows, const double* x, double* y) {
  for (std::uint64_t row = rows.begin; row < rows.end; ++row) y[row] = rowTimesVector(rows, row, x);
}

void timesPanel(const CsrRows& rows, const double* panel, int columns, double* result,
                std::uint64_t stride) {
  for (std::uint64_t row = rows.begin; row < rows.end; ++row) {
    double sums[panelColumns] = {};
    rowTimesPanel(rows, row, panel, sums);
    for (int c = 0; c < columns; ++c)
      result[row + static_cast<std::uint64_t>(c) * stride] = sums[c];
  }
}

}  // namespace

extern const CsrSweeps csrSweepTable;
const CsrSweeps csrSweepTable{timesVector, timesPanel};

}  // namespace zelsvm::ZEL_ISA
