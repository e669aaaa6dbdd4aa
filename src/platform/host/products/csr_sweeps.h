// Products of consecutive rows of a sparse matrix, built once per instruction set.
#pragma once

#include <cstdint>

namespace zelsvm {

// Rows begin … end - 1 of the compressed sparse rows that the arrays hold. Columns may stand in any
// order within a row; one that stands there twice counts twice.
struct CsrRows {
  const int* offsets;
  const int* columns;
  const double* values;
  std::uint64_t begin;
  std::uint64_t end;
};

// Columns of the right-hand matrix that one pass over the rows serves.
inline constexpr int panelColumns = 8;

struct CsrSweeps {
  // y[i] = (A x)[i] for the rows.
  void (*timesVector)(const CsrRows& rows, const double* x, double* y);
  // The same for the first columns of a panel: element (j, c) of the right-hand matrix stands at
  // panel[j * panelColumns + c], all panelColumns of them readable; the result is column-major.
  void (*timesPanel)(const CsrRows& rows, const double* panel, int columns, double* result,
                     std::uint64_t stride);
};

// The sweeps for this processor.
const CsrSweeps& csrSweeps();

#ifdef __x86_64__
namespace avx512 {
extern const CsrSweeps csrSweepTable;
}
namespace avx2 {
extern const CsrSweeps csrSweepTable;
}
#endif
namespace baseline {
extern const CsrSweeps csrSweepTable;
}

}  // namespace zelsvm
